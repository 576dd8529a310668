create table `t` (
  `a` int(11) default NULL,
  `b` int(11) default NULL,
  `A` int(11) default NULL
) ENGINE=InnoDB;
