create table `t` (
  `a` int(11) not null auto_increment,
  `b` decimal(10,2) not null default '0.00',
  `c` varchar(20) default 'x',
  `d` datetime not null default '0000-00-00 00:00:00',
  `e` double default '1.5',
  primary key (`a`)
) ENGINE=InnoDB;
