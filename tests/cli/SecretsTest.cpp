#include "cli/Secrets.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(SecretsTest, AreLeftOutWhereverTheyStand) {
  const struct {
    const char* text;
    const char* shown;
  } cases[] = {
      {"nothing here: a@b, c://d, password", "nothing here: a@b, c://d, password"},
      {"mysql://u:secret@h/d", "mysql://u:***@h/d"},
      {"mysq://u:se@cr:et@h:3/d and more", "mysq://u:***@h:3/d and more"},
      {"\"mysql://u:secret@h/d\" is no source", "\"mysql://u:***@h/d\" is no source"},
      {"mysql://u@h:3306/d", "mysql://u@h:3306/d"},
      {"mysql://u:@h/d", "mysql://u:@h/d"},
      {"MySQL:server=h;PassWord=se cret;port=1", "MySQL:server=h;PassWord=***;port=1"},
      {"password=a;password=b", "password=***;password=***"},
      {"password=", "password="},
      {"a://x:1@y b://x:2@y", "a://x:***@y b://x:***@y"},
      {"x://u:password=1@h", "x://u:***"},
  };
  for (const auto& c : cases) EXPECT_EQ(WithoutSecrets(c.text), c.shown) << c.text;
}

}  // namespace
}  // namespace velmora
