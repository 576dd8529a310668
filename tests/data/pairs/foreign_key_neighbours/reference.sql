create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `a` int(11) not null,
  `b` int(11) not null,
  `d` int(11) not null,
  `e` int(11) not null
) ENGINE=InnoDB;
