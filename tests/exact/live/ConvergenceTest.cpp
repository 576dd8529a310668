// Schemas of the whole language of tables, changed at random and made equal again. scripts/converge runs more of them.

#include <gtest/gtest.h>

#include "support/Convergence.h"

namespace velmora {
namespace {

TEST(ConvergenceTest, FortySeedsBecomeIdentical) {
  constexpr std::uint64_t kSeeds = 40;
  std::size_t statements = 0;
  for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
    const testing::TConvergence result = testing::Converge(seed);
    statements += result.statements;
    EXPECT_EQ(result.fault, "") << "seed " << seed << "; repeat it with: scripts/converge 1 " << seed;
  }
  EXPECT_GT(statements, kSeeds) << "the schemas hardly differ";
}

}  // namespace
}  // namespace velmora
