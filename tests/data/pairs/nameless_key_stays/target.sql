create table `t` (
  `a` int(11) not null,
  key (`a`)
) ENGINE=InnoDB;
