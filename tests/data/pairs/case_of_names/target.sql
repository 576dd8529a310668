create table `T` (
  `A` int(11) default NULL,
  `b` int(11) default NULL
) ENGINE=InnoDB;
create table `u` (
  `A` int(11) default NULL
) ENGINE=InnoDB;
