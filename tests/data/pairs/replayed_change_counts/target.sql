create table `t` (
  `a` int(11) not null,
  `b` int(11) not null,
  primary key (`b`),
  key `_tmp_autoinc_key` (`b`)
) ENGINE=InnoDB;
