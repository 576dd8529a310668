create table `t` (
  `a` int(10) default NULL comment 'none',
  `b` int(11) default NULL,
  `c` varchar(10) default NULL,
  `d` longtext,
  key (`a`),
  key `f` (`c`),
  key `k` (`c`)
) type=InnoDB;
