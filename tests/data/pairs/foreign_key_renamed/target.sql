create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `pid` int(11) not null,
  key `pid` (`pid`),
  constraint `fk_old` foreign key (`pid`) references `p` (`id`) on delete set null on update no action
) ENGINE=InnoDB;
