create table `t` (
  `a` int(11) not null,
  unique key `k` (`a`)
) ENGINE=InnoDB;
