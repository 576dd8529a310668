create table `old` (
  `a` int(11) default NULL
) ENGINE=InnoDB;
create table `t` (
  `a` int(11) default NULL
) ENGINE=InnoDB;
