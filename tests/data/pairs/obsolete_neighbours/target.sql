create table `t` (
  `a` int(11) default NULL,
  `b` int(11) default NULL,
  `x` int(11) default NULL,
  `y` int(11) default NULL,
  `z` int(11) default NULL
) ENGINE=InnoDB;
