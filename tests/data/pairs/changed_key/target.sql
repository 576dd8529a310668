create table `t` (
  `a` int(11) not null,
  key `k` (`a`)
) ENGINE=InnoDB;
