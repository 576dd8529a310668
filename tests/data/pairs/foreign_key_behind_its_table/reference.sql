create table `p` (
  `id` int(11) not null,
  `n` int(11) default NULL,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `pid` int(11) not null,
  key `pid` (`pid`),
  constraint `fk` foreign key (`pid`) references `p` (`id`)
) ENGINE=InnoDB;
