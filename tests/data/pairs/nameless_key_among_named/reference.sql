create table `t` (
  `a` int(11) not null,
  primary key (`a`),
  key (`a`)
) ENGINE=InnoDB;
