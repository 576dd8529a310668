create table `t` (
  `a` char(1) default 'a'
) ENGINE=InnoDB;
