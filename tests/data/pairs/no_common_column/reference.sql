create table `t` (
  `x` int(11) default NULL
) ENGINE=InnoDB;
create table `u` (
  `x` int(11) default NULL
) ENGINE=InnoDB;
