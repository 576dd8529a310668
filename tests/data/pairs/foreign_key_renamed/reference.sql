create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `pid` int(11) not null,
  key `pid` (`pid`),
  constraint `fk_new` foreign key (`pid`) references `p` (`id`) on delete cascade
) ENGINE=InnoDB;
