create table `t` (
  `id` int(11) not null auto_increment,
  `b` int(11) not null,
  primary key (`id`,`b`),
  key `_tmp_autoinc_key` (`id`)
) ENGINE=InnoDB;
create table `u` (
  `id` int(11) not null,
  `b` int(11) not null,
  primary key (`id`,`b`),
  key `_tmp_autoinc_key` (`id`)
) ENGINE=InnoDB;
