create table `t` (
  `a` int(11) not null auto_increment,
  `b` int(11) not null,
  primary key (`a`)
) ENGINE=InnoDB;
