CREATE TABLE `e` (
  `id` int NOT NULL,
  `j` json DEFAULT NULL,
  `u` char(36) DEFAULT (uuid()),
  `x` int DEFAULT NULL /*!80023 INVISIBLE */,
  `p` point NOT NULL /*!80003 SRID 4326 */,
  `q` text /*!50606 STORAGE DISK */ /*!50606 COLUMN_FORMAT FIXED */,
  PRIMARY KEY (`id`),
  KEY `f` ((lower(`u`)),`id` DESC) /*!80000 INVISIBLE */,
  CONSTRAINT `e_chk_1` CHECK ((`x` > 0)) /*!80016 NOT ENFORCED */
) /*!50100 TABLESPACE `ts` */ ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_0900_ai_ci /*!80016 ENCRYPTION='Y' */ START TRANSACTION
