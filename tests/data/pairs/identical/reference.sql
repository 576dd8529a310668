create table `p` (
  `id` int(11) not null auto_increment,
  primary key (`id`)
) ENGINE=InnoDB;
create table `c` (
  `id` int(11) not null,
  `kind` enum('x','y') default NULL,
  key `id` (`id`),
  constraint `fk` foreign key (`id`) references `p` (`id`)
) ENGINE=InnoDB;
