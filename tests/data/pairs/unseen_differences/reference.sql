create table `t` (
  `a` int(11) default NULL,
  `b` int(10) unsigned default NULL,
  `c` varchar(10) character set utf8 default NULL,
  `d` tinytext,
  key `k` (`c`(5)),
  fulltext key `f` (`c`),
  key (`a`)
) ENGINE=InnoDB AUTO_INCREMENT=7 COMMENT='new';
