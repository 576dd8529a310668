create table `t` (
  `a` int(11) not null
) ENGINE=InnoDB;
