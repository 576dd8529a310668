create table `t` (
  `id` int(11) not null auto_increment,
  `b` int(11) not null,
  primary key (`id`),
  key `_tmp_autoinc_key` (`b`)
) ENGINE=InnoDB;
create table `u` (
  `id` int(11) not null,
  `b` int(11) not null,
  primary key (`id`),
  key `_tmp_autoinc_key` (`b`)
) ENGINE=InnoDB;
