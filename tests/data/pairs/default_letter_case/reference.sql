create table `t` (
  `a` char(1) default 'A'
) ENGINE=InnoDB;
