create table `t` (
  `id` int(11) not null auto_increment,
  `b` int(11) not null,
  primary key (`id`)
) ENGINE=InnoDB;
