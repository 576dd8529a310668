create table `t` (
  `a` enum('x','y') default NULL
) ENGINE=InnoDB;
