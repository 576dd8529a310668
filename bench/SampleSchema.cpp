// SPDX-License-Identifier: GPL-3.0-or-later
#include "SampleSchema.h"

#include "util/Format.h"

namespace velmora::bench {

namespace {

constexpr int kForeignKeyStride = 3;

// The differences of a target's table: a wider text, a column less, another key, by turns.
struct TDifferences {
  bool narrow_name = false;
  bool no_note = false;
  bool other_key = false;
  bool counted_on = false;
};

TDifferences DifferencesOf(const TSample& sample, int table) {
  if (sample.differing_percent == 0 || table % (100 / sample.differing_percent) != 0)
    return {.counted_on = sample.auto_increment};
  const int turn = table / (100 / sample.differing_percent) % 3;
  return {turn == 0, turn == 1, turn == 2, sample.auto_increment};
}

std::string TableText(int table, const TDifferences& differences) {
  std::string text = Format("CREATE TABLE `table_%05d` (\n", table);
  text += "  `id` int(11) NOT NULL auto_increment,\n";
  text += Format("  `name` varchar(%d) NOT NULL default '',\n", differences.narrow_name ? 60 : 80);
  if (!differences.no_note) text += "  `note` text,\n";
  text +=
      "  `parent_id` int(11) NOT NULL default '0',\n"
      "  `price` decimal(12,2) NOT NULL default '0.00',\n"
      "  `weight` double default NULL,\n"
      "  `active` tinyint(1) NOT NULL default '1',\n"
      "  `created_at` datetime NOT NULL default '0000-00-00 00:00:00',\n"
      "  `changed_at` timestamp NOT NULL default '0000-00-00 00:00:00',\n"
      "  `code` char(12) default NULL,\n"
      "  `language` varchar(5) NOT NULL default 'en',\n"
      "  `picture` longblob,\n"
      "  PRIMARY KEY  (`id`),\n";
  text += Format("  KEY `ix_parent_%05d` (`parent_id`),\n", table);
  text += differences.other_key ? "  KEY `ix_code` (`code`)" : "  KEY `ix_code` (`code`,`language`)";
  if (table % kForeignKeyStride == 0 && table > 0) {
    text +=
        Format(",\n  CONSTRAINT `fk_%05d` FOREIGN KEY (`parent_id`) REFERENCES `table_%05d` (`id`) ON DELETE CASCADE",
               table, table - 1);
  }
  text += "\n) ENGINE=InnoDB";
  if (differences.counted_on) text += " AUTO_INCREMENT=17";
  return text + " DEFAULT CHARSET=latin1 COMMENT='A table of the sample';\n\n";
}

}  // namespace

std::string SampleScript(const TSample& sample, bool target) {
  std::string script = "-- A sample database\n\n";
  for (int table = 0; table < sample.tables; ++table)
    script += TableText(table, target ? DifferencesOf(sample, table) : TDifferences{});
  return script;
}

}  // namespace velmora::bench
