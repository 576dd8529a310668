create table `p` (
  `id` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `id` int(11) not null,
  `keep` int(11) default NULL,
  `last` int(11) default NULL
) ENGINE=InnoDB;
