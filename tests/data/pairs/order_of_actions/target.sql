create table `stale` (
  `id` int(11) not null
) ENGINE=InnoDB;
create table `u` (
  `a` int(11) default NULL
) ENGINE=InnoDB;
create table `t` (
  `a` int(11) not null,
  `a2` int(11) default NULL,
  `z` int(11) default NULL,
  primary key (`a`),
  key `kz` (`z`)
) ENGINE=MyISAM;
