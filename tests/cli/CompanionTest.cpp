#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

#include "support/CompanionRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using TJson = nlohmann::ordered_json;

constexpr char kItems[] =
    "CREATE TABLE `items` (\n  `id` int(11) NOT NULL auto_increment,\n  `name` varchar(40) default 'x',\n"
    "  `price` decimal(10,2) NOT NULL default '0.00',\n  PRIMARY KEY  (`id`),\n  KEY `ix` (`name`)\n"
    ") TYPE=InnoDB;\n";

using testing::TAnswer;

class CompanionTest : public ::testing::Test {
 protected:
  std::string File(const std::string& name, const std::string& text) {
    const std::string path = folder_ / name;
    WriteFileText(path, text);
    return path;
  }
  // The sample with one text replaced.
  std::string Changed(const std::string& name, const std::string& from, const std::string& to) {
    std::string text = kItems;
    text.replace(text.find(from), from.size(), to);
    return File(name, text);
  }
  TAnswer Run(const std::vector<std::string>& arguments) { return testing::RunInProcess(arguments); }

  testing::TScratchFolder folder_;
};

std::vector<std::string> KeysOf(const TJson& object) {
  std::vector<std::string> keys;
  for (const auto& entry : object.items()) keys.push_back(entry.key());
  return keys;
}

TEST_F(CompanionTest, CompareTellsByItsExitStatus) {
  const std::string a = File("a.sql", kItems);
  const std::string b = Changed("b.sql", "varchar(40)", "varchar(20)");
  const TAnswer same = Run({"compare", a, a});
  EXPECT_EQ(same.status, 0);
  EXPECT_EQ(same.out, "Databases are identical. Nothing to synchronize.\n");
  const TAnswer different = Run({"compare", a, b});
  EXPECT_EQ(different.status, 1);
  EXPECT_EQ(different.out, "~ items\n    ~ Changed column name\n\n1 difference in 1 table\n");
  EXPECT_EQ(different.err, "");
  const TAnswer failed = Run({"compare", a, (folder_ / "none.sql")});
  EXPECT_EQ(failed.status, 2);
  EXPECT_THAT(failed.err, HasSubstr("velmora-cli: Cannot read " + (folder_ / "none.sql")));
}

TEST_F(CompanionTest, CompareAsJson) {
  const TAnswer answer =
      Run({"compare", File("a.sql", kItems), Changed("b.sql", "varchar(40)", "varchar(20)"), "--format", "json"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.out,
            "{\"identical\":false,\"actions\":[{\"id\":1,\"table\":\"items\",\"item\":\"name\",\"action_id\":3,"
            "\"action\":\"Modify column\",\"description\":\"varchar(40) default 'x' after id\"}],"
            "\"log\":[\"Changed column name\"],\"error\":null}\n");
}

TEST_F(CompanionTest, AFailedComparisonStillPrintsJsonAndNamesThePlace) {
  const std::string a = File("a.sql", std::string(kItems) + "create table bad (\n  a enum('x','y')\n) type=InnoDB;\n");
  const std::string b = File("b.sql", std::string("create table gone (a int not null) type=InnoDB;\n") + kItems +
                                          "create table bad (\n  a int not null\n) type=InnoDB;\n");
  const TAnswer answer = Run({"compare", a, b, "--format", "json"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.err, "velmora-cli: " + a +
                            ": line 8: table bad: ''x'' is not a valid integer value\n"
                            "velmora-cli: note: --dialect exact reads this table\n");
  const TJson json = TJson::parse(answer.out);
  EXPECT_FALSE(json["identical"].get<bool>());
  EXPECT_EQ(json["actions"].size(), 1u) << "what was found before the error stays";
  EXPECT_EQ(json["error"], "''x'' is not a valid integer value");
  const TAnswer none = Run({"compare", a, (folder_ / "none.sql"), "--format", "json"});
  EXPECT_THAT(none.out, HasSubstr("{\"identical\":false,\"actions\":[],")) << "nothing found is not identical";
}

TEST_F(CompanionTest, AnErrorOfTheComparisonItselfNamesTheTable) {
  const TAnswer answer = Run({"compare", File("a.sql", "create table t (\n a int not null\n) type=InnoDB;"),
                              File("b.sql", "create table t (\n a int not null,\n b int not null\n) type=InnoDB;")});
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.err,
            "velmora-cli: table t: List index out of bounds (-1)\n"
            "velmora-cli: note: --dialect exact reads this table\n");
}

TEST_F(CompanionTest, ScriptGoesToStandardOutputWithCrLf) {
  const TAnswer answer = Run({"script", File("a.sql", kItems), Changed("b.sql", "varchar(40)", "varchar(20)")});
  EXPECT_EQ(answer.status, 0);
  EXPECT_THAT(answer.out, HasSubstr("\r\n\r\nset foreign_key_checks=0;\r\n\r\n"
                                    "alter table items modify column name varchar(40) default 'x';\r\n\r\n"
                                    "set foreign_key_checks=1;\r\n"));
}

TEST_F(CompanionTest, ScriptAsJsonSetsTheHeaderApart) {
  const TAnswer answer =
      Run({"script", File("a.sql", kItems), Changed("b.sql", "varchar(40)", "varchar(20)"), "--format", "json"});
  const TJson json = TJson::parse(answer.out);
  EXPECT_THAT(KeysOf(json), ElementsAre("header", "lines", "error"));
  EXPECT_EQ(json["header"].size(), 2u);
  EXPECT_THAT(
      json["lines"].get<std::vector<std::string>>(),
      ElementsAre("", "set foreign_key_checks=0;", "", "alter table items modify column name varchar(40) default 'x';",
                  "", "set foreign_key_checks=1;"));
}

TEST_F(CompanionTest, ScriptReplacesItsFileOnlyWhenWhole) {
  const std::string a = File("a.sql", kItems);
  const std::string output = File("sync.sql", "kept");
  EXPECT_EQ(Run({"script", a, Changed("bad.sql", "varchar(40)", "mediumint(9)"), "-o", output}).status, 2);
  EXPECT_EQ(ReadFileText(output), "kept");
  const TAnswer whole = Run({"script", a, Changed("b.sql", "varchar(40)", "varchar(20)"), "-o", output});
  EXPECT_EQ(whole.status, 0);
  EXPECT_EQ(whole.out, "");
  EXPECT_THAT(ReadFileText(output), HasSubstr("modify column name"));
}

TEST_F(CompanionTest, SchemaShowsEachTableAndGoesOnBehindAFailedOne) {
  const std::string file = File("a.sql", "create table bad (a mediumint) type=MyISAM;\n" + std::string(kItems));
  const TAnswer text = Run({"schema", file});
  EXPECT_EQ(text.status, 2);
  EXPECT_EQ(text.err,
            "velmora-cli: " + file + ": line 1: table bad: TDBConn.DecodeColumn: Unhandled column type mediumint\n");
  EXPECT_EQ(text.out,
            "bad\n  cannot be read: TDBConn.DecodeColumn: Unhandled column type mediumint\n\n"
            "items (InnoDB)\n  id     int not null auto_increment\n  name   varchar(40) default 'x'\n"
            "  price  decimal(10,2) not null default '0'\n  primary key (id)\n  key `ix` (name)\n");
  const TJson json = TJson::parse(Run({"schema", file, "--format", "json"}).out);
  EXPECT_THAT(KeysOf(json), ElementsAre("engine", "display_name", "tables", "error"));
  EXPECT_EQ(json["error"], json["tables"][0]["error"]);
  EXPECT_TRUE(json["tables"][0]["columns"].empty());
  EXPECT_EQ(json["tables"][1]["columns"].size(), 3u);
}

TEST_F(CompanionTest, SchemaOfChosenTablesIgnoresTheOthers) {
  const std::string file = File("a.sql", "create table bad (a mediumint) type=MyISAM;\n" + std::string(kItems));
  EXPECT_EQ(Run({"schema", file, "ITEMS"}).status, 0);
  const TAnswer missing = Run({"schema", file, "nothing"});
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.err, "velmora-cli: " + file + ": table nothing: Can't find table nothing in metadata\n");
}

TEST_F(CompanionTest, JsonOfATableHasAllKeysInOrder) {
  const std::string file = File(
      "a.sql", std::string(kItems) +
                   "create table child (pid int not null, wide varchar(300), key ix (pid), constraint fk foreign key "
                   "(pid) references items (id) on delete set null) type=InnoDB;");
  const TJson json = TJson::parse(Run({"schema", file, "--format", "json"}).out);
  const TJson& child = json["tables"][1];
  EXPECT_THAT(KeysOf(child), ElementsAre("name", "type", "columns", "keys", "constraints", "error"));
  EXPECT_THAT(KeysOf(child["columns"][0]), ElementsAre("name", "datatype", "tag", "size", "precision", "notnull",
                                                       "default", "autoinc", "text", "text_error"));
  EXPECT_EQ(child["keys"][0].dump(),
            "{\"name\":\"ix\",\"primary\":false,\"unique\":false,\"fulltext\":false,"
            "\"columns\":[\"pid\"],\"orders\":[\"\"],\"text\":\"key `ix` (pid)\"}");
  EXPECT_EQ(child["constraints"][0].dump(),
            "{\"name\":\"fk\",\"constraint_type\":2,\"foreign_table\":\"items\",\"delete_rule\":\"set null\","
            "\"update_rule\":\"\",\"def_value\":\"\",\"check_condition\":\"\",\"local\":[\"pid\"],\"foreign\":[\"id\"],"
            "\"text\":\"constraint fk foreign key(pid) references items(id)\"}");
  EXPECT_TRUE(child["columns"][1]["text"].is_null()) << "a text that cannot be rendered is no reason to fail";
  EXPECT_EQ(child["columns"][1]["text_error"],
            "TDBConn.ColumnDescription: Unhandled column type 16 for column child/wide");
}

TEST_F(CompanionTest, BytesThatAreNoUtf8AreReplacedInJson) {
  const std::string file = File("a.sql", "create table t (a varchar(9) default '\xE4') type=InnoDB;");
  const TJson json = TJson::parse(Run({"schema", file, "--format", "json"}).out);
  EXPECT_EQ(json["tables"][0]["columns"][0]["default"], "'\xEF\xBF\xBD'");
}

TEST_F(CompanionTest, ParseShowsTheRowsAsTheyStandAfterAnErrorToo) {
  const std::string file = File("a.txt", "create table t (a int not null);\ncreate table u (b int, c year(4) ^);\n\n");
  EXPECT_EQ(Run({"parse", file}).out, "t\n  a  int not null\n\nu\n  b  int\n  c  year\n");
  const std::string bad = File("b.txt", "create table t (a int not null);\n\ndrop table nothing;");
  const TAnswer answer = Run({"parse", bad, "--format", "json"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.err, "velmora-cli: " + bad + ": line 3: Can't drop undefined table nothing\n");
  const TJson json = TJson::parse(answer.out);
  EXPECT_EQ(json["error"], "Can't drop undefined table nothing");
  EXPECT_EQ(json["tables"].size(), 1u);
  EXPECT_EQ(json["engine"], 8);
}

TEST_F(CompanionTest, ParseTakesATextThatEndsInALine) {
  const TAnswer answer = Run({"parse", File("a.txt", "\r\n create table t (a int not null) type=x;\r\n\n")});
  EXPECT_EQ(answer.err, "");
  EXPECT_EQ(answer.out, "t (x)\n  a  int not null\n");
}

TEST_F(CompanionTest, ParseDropsWhatTheSameTextHasMade) {
  const TAnswer answer = Run({"parse", File("a.txt",
                                            "create table t (a int not null, b int not null, key k (b)) type=x;\n"
                                            "alter table t drop key k;\nalter table t drop column b;")});
  EXPECT_EQ(answer.err, "");
  EXPECT_EQ(answer.out, "t (x)\n  a  int not null\n");
}

TEST_F(CompanionTest, ReplayNamesTheLineThatTheFilledStoreRefuses) {
  const TAnswer answer =
      Run({"replay", File("a.sql", kItems), File("b.txt", "drop table items;\n\ndrop table items;")});
  EXPECT_EQ(answer.status, 2);
  EXPECT_THAT(answer.err, HasSubstr("b.txt: line 3: Can't drop undefined table items\n"));
}

TEST_F(CompanionTest, ArgumentsThatMakeNoSenseAreNamed) {
  const std::string good = File("a.sql", kItems);
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } cases[] = {
      {{"nothing"}, "\"nothing\" is no command"},
      {{"compare", good, good, "--format", "xml"}, "\"xml\" is none of text, json"},
      {{"compare", good, good, "--format", "1"}, "\"1\" is none of text, json"},
      {{"compare", good, good, "--tls", "maybe"}, "\"maybe\" is none of off, preferred, verify-ca, required"},
      {{"compare", good, good, "--tls", "preferred", "--tls-ca", "ca.pem"}, "--tls-ca has nothing to check"},
      {{"compare", good, "mysql://u:p@h/d", "--tls-key", "key.pem"}, "needs its certificate"},
      {{"compare", good, "mysql://u:p@h/d?ssl=1"}, "has no parameters after a \"?\""},
      {{"compare", good, "mysql://u:p@h/d", "--socket", "s"}, "h.d is reached by TCP"},
      {{"compare", good, "mysql://u:p@localhost:3306/d", "--socket", "s"}, "localhost.d is reached by TCP"},
      {{"schema", "mysql://u@127.0.0.1:1/d", "--password-file", "/dev/zero"},
       "/dev/zero: its first line is no password"},
      {{"schema", "mysql://u:p@127.0.0.1:1/d", "--server-public-key", good}, "a.sql holds no public key of a server"},
      {{"schema", "mysql://u:p@127.0.0.1:1/d", "--client", "library", "--server-public-key", good},
       "holds no public key"},
      {{"compare", good, good, "--client", "both"}, "\"both\" is none of native, library"},
      {{"script", good, good, "-o", ""}, "an empty name is no file"},
      {{"rows", good, "items", "--limit", "x"}, "--limit: \"x\" is no whole number from 0 to 9223372036854775807 ("},
      {{"compare", "first", "second"}, "\"first\" is no source"},
      {{"parse", ""}, "Cannot read \"\": "},
  };
  for (const auto& c : cases) {
    const TAnswer answer = Run(c.arguments);
    EXPECT_EQ(answer.status, 2) << c.message;
    EXPECT_THAT(answer.err, HasSubstr(c.message));
    EXPECT_EQ(answer.out, "");
  }
}

// Each client has its own words for a server that is not there.
TEST_F(CompanionTest, ClientIsAChoice) {
  const std::string source = "mysql://root:x@127.0.0.1:1/d";
  EXPECT_THAT(Run({"schema", source}).err, HasSubstr("Can't connect to MySQL server on '127.0.0.1'"));
  EXPECT_THAT(Run({"schema", source, "--client", "native"}).err, HasSubstr("MySQL server on '127.0.0.1'"));
  EXPECT_THAT(Run({"schema", source, "--client", "library"}).err, HasSubstr("connect to server on '127.0.0.1'"));
}

TEST_F(CompanionTest, NoMessageShowsAPassword) {
  const std::string secret = "mysql://root:sE\"c \x1b[mret9@h/d";
  const std::string good = File("a.sql", kItems);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{secret},
                                             {"compare", "a.sql", "b.sql", secret},
                                             {"parse", secret},
                                             {"split", secret},
                                             {"task", "show", secret},
                                             {"schema", "mariadb://root:sEcret9@h/d", "--format", "json"},
                                             {"schema", good, secret},
                                             {"schema", good, "--format=" + secret},
                                             {"schema", "scott/sEcret9@orcl"},
                                             {"rows", good, "items", "--limit", secret},
                                             {"rows", secret + ":", "t", "--format", "json"},
                                             {"script", good, good, "-o" + secret},
                                             {"schema", "MySQL:server=h;password=sE;cret=1", "--format", "json"}}) {
    const TAnswer answer = Run(arguments);
    EXPECT_EQ(answer.status, 2);
    const std::string all = answer.out + answer.err;
    for (const char* part : {"sE", "ret9", "cret", "\x1b"})
      EXPECT_EQ(all.find(part), std::string::npos) << arguments[0] << ": " << all;
  }
}

TEST_F(CompanionTest, ReplayShowsWhatStatementsWouldMakeOfADatabase) {
  const std::string source = File("a.sql", kItems);
  const std::string file =
      File("changes.sql", "alter table items drop column name;\nalter table items add n int not null;");
  const TAnswer answer = Run({"replay", source, file});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_EQ(answer.out,
            "items (InnoDB)\n  id     int not null auto_increment\n  price  decimal(10,2) not null default '0'\n"
            "  n      int not null\n  primary key (id)\n");
}

// A text may hold what reads as a statement on its own table; the other tables are none the worse for it.
TEST_F(CompanionTest, ReplayGoesOnBehindATableThatCannotBeRead) {
  const std::string file = File(
      "a.sql", "create table t (a int not null comment 'old, alter table t drop a', b int);\n" + std::string(kItems));
  const std::string error = "Table t is read within its own reading";
  const TAnswer answer = Run({"replay", file, File("b.txt", "alter table items add n int not null;")});
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.err, "velmora-cli: " + file + ": line 1: table t: " + error + "\n");
  EXPECT_THAT(answer.out, ::testing::StartsWith("t\n  cannot be read: " + error + "\n\nitems (InnoDB)\n"));
  EXPECT_THAT(answer.out, HasSubstr("\n  n      int not null\n"));
  EXPECT_THAT(Run({"replay", file, File("c.txt", "create table t (z int not null) type=x;")}).out,
              HasSubstr("\nt (x)\n  z  int not null\n"));
  EXPECT_THAT(Run({"compare", "--dialect", "standard", file, File("d.sql", "create table t (a int);")}).err,
              HasSubstr(error));
  std::string chain;
  for (int i = 0; i < 3000; ++i)
    chain += "create table t" + std::to_string(i) + " (a int comment ', alter table t" + std::to_string(i + 1) +
             " drop a', b int) type=x;\n";
  EXPECT_THAT(Run({"schema", File("chain.sql", chain)}).err, HasSubstr("is read within the reading of"));
}

// Texts of strangers must not move the cursor, ring, or forge lines.
TEST_F(CompanionTest, ControlSequencesAreShownEscaped) {
  const std::string name = "e\x1b[2J\nv\u202el\u009b\xff\u00e9";
  const std::string shown = R"(e\x1B[2J\nv\u202El\x9B\xFF)"
                            "\u00e9";
  const std::string a = File("a.sql", "create table `" + name + "` (`c\x07` int default '\r') type=InnoDB;");
  const std::string b = File("b.sql", "create table t (c int default '\x1b') type=InnoDB;");
  const std::string changes = File("c.txt", "drop table \x1bx;");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"schema", a},
                                             {"schema", b, name},
                                             {"compare", a, b, "--dialect", "standard"},
                                             {"compare", a, b, "--dialect", "exact"},
                                             {"parse", changes},
                                             {"\x1b"},
                                             {"schema", a, "--format", "\x1b"}}) {
    const TAnswer answer = Run(arguments);
    for (const std::string& text : {answer.out, answer.err})
      EXPECT_EQ(text.find_first_of("\x1b\x07\r\x9b\xff"), std::string::npos) << text;
  }
  EXPECT_EQ(Run({"schema", a}).out, shown + " (InnoDB)\n  c\\x07  int default '\\r'\n");
  const std::string plain = File("d.sql", "create table `e\x1b[2J` (a int) engine=InnoDB;");
  EXPECT_THAT(Run({"compare", plain, b, "--dialect", "exact"}).out, HasSubstr("+ New table e\\x1B[2J\n"));
  EXPECT_THAT(Run({"schema", b, name}).err, HasSubstr("Can't find table e\\x1B[2J\n  v"));
  EXPECT_THAT(Run({"script", plain, b, "--dialect", "exact"}).out, HasSubstr("e\x1b[2J"))
      << "a pipe gets what is to run";
}

TEST_F(CompanionTest, NamesThatDifferInCaseAloneAreTold) {
  const std::string a = File("a.sql", "create table Items (a int, Id int) engine=InnoDB;");
  const std::string b = File("b.sql", "create table items (a int not null, id int) engine=InnoDB;");
  const std::string table = "Table Items of the reference is items in the target: the names differ";
  const TAnswer standard = Run({"compare", "--dialect", "standard", a, b});
  EXPECT_THAT(standard.err, HasSubstr("velmora-cli: warning: " + table));
  EXPECT_THAT(standard.err, HasSubstr("Column Id of the reference's table Items is id in the target: "));
  const TAnswer exact = Run({"compare", "--dialect", "exact", a, b, "--format", "json"});
  EXPECT_THAT(exact.err, HasSubstr("velmora-cli: note: " + table));
  EXPECT_THAT(exact.out, HasSubstr("\"log\":[\"" + table));
  EXPECT_EQ(Run({"compare", a, a}).err, "");
}

// As <(command) is one: what is read once is gone.
TEST_F(CompanionTest, APasswordFromAPipeIsReadOnceForBothSides) {
  const std::string pipe = folder_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { WriteFileText(pipe, "sEcret9\n"); });
  const std::string task = folder_ / "x.vlt";
  EXPECT_EQ(Run({"task", "new", task, "mysql://a@h/d", "mysql://b@h/e", "--password-file", pipe}).err, "");
  writer.join();
  const std::string shown = Run({"task", "show", task, "--show-passwords"}).out;
  EXPECT_NE(shown.find("sEcret9"), shown.rfind("sEcret9"));
}

TEST_F(CompanionTest, SplitTakesATextAsTheEditorOrAsItIs) {
  const std::string file = File("a.txt", "a 1;\nb 2;\n");
  EXPECT_EQ(Run({"split", file, "--format", "json"}).out,
            "{\"statements\":[{\"text\":\"a 1\",\"position\":2},{\"text\":\"b 2\",\"position\":7}],\"pieces\":3}\n");
  EXPECT_EQ(Run({"split", file, "--raw", "--format", "json"}).out,
            "{\"statements\":[{\"text\":\"a 1\",\"position\":2},{\"text\":\"b 2\",\"position\":6}],\"pieces\":3}\n");
}

TEST_F(CompanionTest, WarningsNameFileLineAndWhatWasPassedOver) {
  const std::string file =
      File("a.sql", std::string(kItems) +
                        "drop table x;\nalter table y add z int;\ncreate table Items (a int not null) "
                        "type=MyISAM;\n");
  const TAnswer answer = Run({"schema", file});
  EXPECT_EQ(answer.status, 0);
  EXPECT_THAT(answer.err, HasSubstr("velmora-cli: warning: " + file + ": "));
  EXPECT_THAT(answer.err, HasSubstr("Items"));
  const TAnswer verbose = Run({"schema", file, "--verbose"});
  EXPECT_THAT(verbose.err, HasSubstr("line 9"));
  EXPECT_GT(verbose.err.size(), answer.err.size());
  const TAnswer empty = Run({"schema", File("empty.sql", "-- nothing\n")});
  EXPECT_EQ(empty.status, 0) << "a dump without tables is an empty database";
  EXPECT_THAT(empty.err, HasSubstr("warning"));
}

TEST_F(CompanionTest, BadInputIsOneLineThatNamesIt) {
  const std::string good = File("a.sql", kItems);
  const struct {
    const char* text;
    const char* fault;
  } files[] = {
      {"create table t (\n a varchar(5) default 'x\n) type=InnoDB;", "line 2: unclosed ' quote"},
      {"select 1;\n/* never closed", "line 2: unclosed comment"},
      {nullptr, "line 2: NUL byte"},
  };
  for (const auto& file : files) {
    const std::string path = File("bad.sql", file.text == nullptr ? std::string("a\n\0b", 4) : std::string(file.text));
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"compare", good, path}, {"compare", path, good}, {"script", path, good}, {"schema", path}}) {
      const TAnswer answer = Run(arguments);
      EXPECT_EQ(answer.status, 2);
      EXPECT_THAT(answer.err, HasSubstr("velmora-cli: " + path + ": " + file.fault));
      EXPECT_EQ(std::count(answer.err.begin(), answer.err.end(), '\n'), 1) << answer.err;
    }
  }
  for (const auto& arguments : std::vector<std::vector<std::string>>{{"compare", "nonsense", good},
                                                                     {"compare", good, "nonsense"},
                                                                     {"parse", (folder_ / "none")},
                                                                     {"schema", (folder_ / "")},
                                                                     {"script", good, good, "-o", "/no/folder/x"},
                                                                     {"compare", good},
                                                                     {"compare", good, good, "--format", "xml"},
                                                                     {"unknown"},
                                                                     {}}) {
    const TAnswer answer = Run(arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, ::testing::StartsWith("velmora-cli: "));
    EXPECT_EQ(answer.out, "");
  }
}

TEST_F(CompanionTest, AFileCannotBeChanged) {
  const std::string a = File("a.sql", kItems);
  const std::string b = Changed("b.sql", "varchar(40)", "varchar(20)");
  const TAnswer refused = Run({"sync", a, b});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("--yes"));
  const TAnswer offline = Run({"sync", a, b, "--yes"});
  EXPECT_EQ(offline.status, 2);
  EXPECT_THAT(offline.err, HasSubstr("velmora-cli: " + b + " is a script file: it cannot run statements"));
  const TAnswer identical = Run({"sync", a, a, "--yes"});
  EXPECT_EQ(identical.status, 0);
  EXPECT_EQ(identical.out, "Databases are identical. Nothing to synchronize.\n");
  EXPECT_EQ(Run({"rows", a, "items"}).status, 2);
}

TEST_F(CompanionTest, HelpAndVersionEverywhere) {
  for (const char* command : {"", "compare", "script", "sync", "schema", "parse", "replay", "split", "rows"}) {
    std::vector<std::string> arguments;
    if (*command != '\0') arguments.push_back(command);
    arguments.push_back("--help");
    EXPECT_THAT(Run(arguments).out, HasSubstr(*command == '\0' ? "Subcommands" : command));
    arguments.back() = "--version";
    const TAnswer version = Run(arguments);
    EXPECT_EQ(version.status, 0);
    EXPECT_THAT(version.out, ::testing::StartsWith("velmora-cli 2.0"));
  }
}

// The program itself, with its real streams.
TEST_F(CompanionTest, TheProgramGivesStatusAndStreams) {
  const std::string a = File("a.sql", kItems);
  const std::string b = Changed("b.sql", "varchar(40)", "varchar(20)");
  const auto run = [&](const std::string& arguments) {
    TAnswer answer;
    FILE* pipe = popen((std::string(VELMORA_CLI) + " " + arguments + " 2>" + (folder_ / "err")).c_str(), "r");
    char buffer[4096];
    while (const std::size_t count = fread(buffer, 1, sizeof buffer, pipe)) answer.out.append(buffer, count);
    answer.status = WEXITSTATUS(pclose(pipe));
    answer.err = ReadFileText((folder_ / "err"));
    return answer;
  };
  EXPECT_EQ(run("compare " + a + " " + a).status, 0);
  const TAnswer different = run("compare " + a + " " + b);
  EXPECT_EQ(different.status, 1);
  EXPECT_THAT(different.out, HasSubstr("Changed column name"));
  EXPECT_EQ(different.err, "") << "no progress where standard error is no terminal";
  EXPECT_EQ(run("compare nonsense " + b).status, 2);
  const TAnswer full = run("script " + a + " " + b + " >/dev/full");
  EXPECT_EQ(full.status, 2);
  EXPECT_EQ(full.err, "velmora-cli: cannot write to standard output\n");
}

}  // namespace
}  // namespace velmora
