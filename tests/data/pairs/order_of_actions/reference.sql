create table `fresh` (
  `id` int(11) not null
) ENGINE=InnoDB;
create table `t` (
  `a` int(11) not null,
  `a2` int(11) default NULL,
  `b` varchar(20) default 'x',
  primary key (`a`),
  key `kb` (`b`)
) ENGINE=InnoDB;
create table `u` (
  `a` int(11) default NULL,
  `c` int(11) default NULL
) ENGINE=InnoDB;
