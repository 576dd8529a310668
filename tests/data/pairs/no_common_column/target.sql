create table `t` (
  `a` int(11) default NULL,
  `b` int(11) default NULL,
  `c` int(11) default NULL
) ENGINE=InnoDB;
create table `u` (
  `a` int(11) default NULL
) ENGINE=InnoDB;
