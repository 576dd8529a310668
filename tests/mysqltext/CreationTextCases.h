#pragma once

// Creation texts as servers print them; those of MySQL in its published format.

namespace velmora::testing {

// Every kind of column, key, check and option, as MariaDB 10.11 prints it.
inline constexpr const char* kMariaDbTexts[] = {
    R"(CREATE TABLE `t` (
  `Total` int(11) NOT NULL COMMENT 'u',
  `b` varchar(20) CHARACTER SET latin1 COLLATE latin1_bin DEFAULT NULL,
  `c` timestamp NULL DEFAULT NULL,
  `d` datetime(6) DEFAULT current_timestamp(6) ON UPDATE current_timestamp(6),
  `e` text /*M!100301 COMPRESSED*/ DEFAULT NULL,
  `f` int(10) unsigned zerofill DEFAULT 0000000001,
  `g` year(4) DEFAULT 2005,
  `h` decimal(5,2) DEFAULT -4.50,
  `i` varchar(20) DEFAULT concat('a',')b'),
  `j` longtext CHARACTER SET utf8mb4 COLLATE utf8mb4_bin DEFAULT '{}' CHECK (json_valid(`j`)),
  `k` bit(3) DEFAULT b'101',
  `l` date DEFAULT '2005-01-01',
  `m` int(11) GENERATED ALWAYS AS (`Total` + 1) STORED INVISIBLE COMMENT 'x''y\n(z), "q" not null first after `t`',
  `n` enum('a,b','c''d','e\\f','(') DEFAULT 'a,b',
  `o` char(36) DEFAULT uuid(),
  `p` int(11) DEFAULT NULL CHECK (`p` > 0 and `p` <> 3),
  `q` uuid DEFAULT NULL,
  `s` point NOT NULL,
  `v` set('x','y') DEFAULT NULL,
  `w` int(11) DEFAULT (`Total` + 1 * 2),
  `x` timestamp NOT NULL DEFAULT current_timestamp(),
  `z` date DEFAULT (curdate() + interval 1 day),
  `order, by``s` double DEFAULT 10000000000,
  PRIMARY KEY (`Total`),
  UNIQUE KEY `u x` (`b`) USING BTREE,
  KEY `k1` (`b`(3),`f` DESC) COMMENT 'c' KEY_BLOCK_SIZE=4,
  SPATIAL KEY `sp` (`s`),
  KEY `ig` (`f`) IGNORED,
  FULLTEXT KEY `ft` (`b`),
  CONSTRAINT `f 1` FOREIGN KEY (`f`) REFERENCES `other db`.`p``q` (`id x`) ON DELETE SET NULL ON UPDATE NO ACTION,
  CONSTRAINT `c``x` CHECK (`f` < 5 and `b` like 'a\\_%')
) ENGINE=InnoDB AUTO_INCREMENT=5 DEFAULT CHARSET=latin1 COLLATE=latin1_swedish_ci STATS_PERSISTENT=1 COMMENT='it''s; (x)')",
    R"(CREATE TABLE `v` (
  `a` int(11) DEFAULT NULL WITHOUT SYSTEM VERSIONING,
  `s` timestamp(6) GENERATED ALWAYS AS ROW START,
  `e` timestamp(6) GENERATED ALWAYS AS ROW END,
  `p1` date NOT NULL,
  `p2` date NOT NULL,
  PERIOD FOR SYSTEM_TIME (`s`, `e`),
  PERIOD FOR `app` (`p1`, `p2`),
  UNIQUE KEY `id` (`a`,`app` WITHOUT OVERLAPS)
) ENGINE=InnoDB DEFAULT CHARSET=latin1 COLLATE=latin1_swedish_ci `page_compressed`='1' WITH SYSTEM VERSIONING
 PARTITION BY SYSTEM_TIME INTERVAL 7 DAY STARTS TIMESTAMP'2026-11-21 00:00:00'
(PARTITION `p0` HISTORY ENGINE = InnoDB,
 PARTITION `pn` CURRENT ENGINE = InnoDB))",
    R"(CREATE TABLE `h` (
  `a` int(11) NOT NULL,
  `b` varchar(5) DEFAULT NULL
) ENGINE=MRG_MyISAM DEFAULT CHARSET=latin1 COLLATE=latin1_swedish_ci INSERT_METHOD=LAST UNION=(`m1`,`m 2`)
 PARTITION BY LIST  COLUMNS(`b`)
SUBPARTITION BY HASH (`a`)
SUBPARTITIONS 2
(PARTITION `x` VALUES IN ('a','b') COMMENT = 'y' ENGINE = InnoDB,
 PARTITION `y` VALUES IN ('c',NULL) ENGINE = InnoDB))"};

// As MySQL 5.6, 5.7 and 8 print them.
inline constexpr const char* kMySqlTexts[] = {
    R"(CREATE TABLE `o` (
  `id` bigint(20) unsigned NOT NULL AUTO_INCREMENT,
  `n` varchar(60) COLLATE utf8mb4_bin NOT NULL DEFAULT '' COMMENT 'a\'b',
  `d` decimal(9,2) DEFAULT '0.00',
  `g` int(11) GENERATED ALWAYS AS ((`id` + 1)) VIRTUAL,
  `t` timestamp NOT NULL DEFAULT CURRENT_TIMESTAMP ON UPDATE CURRENT_TIMESTAMP,
  PRIMARY KEY (`id`),
  FULLTEXT KEY `ft` (`n`) /*!50100 WITH PARSER `ngram` */ ,
  CONSTRAINT `o_ibfk_1` FOREIGN KEY (`id`) REFERENCES `p` (`id`) ON DELETE CASCADE
) ENGINE=InnoDB AUTO_INCREMENT=12 DEFAULT CHARSET=utf8mb4 ROW_FORMAT=DYNAMIC
/*!50500 PARTITION BY RANGE  COLUMNS(id)
(PARTITION p0 VALUES LESS THAN (10) ENGINE = InnoDB,
 PARTITION p1 VALUES LESS THAN (MAXVALUE) ENGINE = InnoDB) */)",
    R"(CREATE TABLE `e` (
  `id` int NOT NULL,
  `j` json DEFAULT NULL,
  `u` char(36) DEFAULT (uuid()),
  `x` int DEFAULT NULL /*!80023 INVISIBLE */,
  `p` point NOT NULL /*!80003 SRID 4326 */,
  `q` text /*!50606 STORAGE DISK */ /*!50606 COLUMN_FORMAT FIXED */,
  PRIMARY KEY (`id`),
  KEY `f` ((lower(`u`)),`id` DESC) /*!80000 INVISIBLE */,
  CONSTRAINT `e_chk_1` CHECK ((`x` > 0)) /*!80016 NOT ENFORCED */
) /*!50100 TABLESPACE `ts` */ ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_0900_ai_ci /*!80016 ENCRYPTION='Y' */ START TRANSACTION)"};

}  // namespace velmora::testing
