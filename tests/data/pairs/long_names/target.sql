create table `archive_of_all_orders_that_were_delivered_late_in_2004` (
  `a` int(11) default NULL
) ENGINE=InnoDB;
