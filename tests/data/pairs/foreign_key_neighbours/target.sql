create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `a` int(11) not null,
  `b` int(11) not null,
  `d` int(11) not null,
  `e` int(11) not null,
  foreign key (`e`) references `p` (`id`),
  constraint `fk1` foreign key (`a`) references `p` (`id`),
  constraint `fk2` foreign key (`b`) references `p` (`id`),
  constraint `fk3` foreign key (`d`) references `p` (`id`)
) ENGINE=InnoDB;
