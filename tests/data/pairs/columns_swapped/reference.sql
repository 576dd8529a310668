create table `t` (
  `b` int(11) default NULL,
  `a` int(11) default NULL
) ENGINE=InnoDB;
