create table `c` (
  `pid` int(11) not null,
  key `pid` (`pid`)
) ENGINE=InnoDB;
create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
