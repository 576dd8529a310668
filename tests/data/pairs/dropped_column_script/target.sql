create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `id` int(11) not null,
  `u` int(11) default NULL,
  `keep` int(11) default NULL,
  `last` int(11) default NULL,
  `pid` int(11) not null,
  key `k` (`pid`),
  constraint `fk` foreign key (`pid`) references `p` (`id`)
) ENGINE=InnoDB;
