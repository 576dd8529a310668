create table `t` (
  `a` int(11) not null
) ENGINE=InnoDB;
create table `kinds` (
  `kind` enum('x','y') default NULL
) ENGINE=MyISAM;
