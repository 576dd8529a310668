create table `t` (
  `a` int(11) not null,
  `b` decimal(8,2) not null default '0.00',
  `c` varchar(20) default NULL,
  `d` datetime default NULL,
  `e` double default NULL,
  primary key (`a`)
) ENGINE=InnoDB;
