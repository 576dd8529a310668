create table `archive_of_all_orders_that_were_delivered_late_in_2004` (
  `a` int(11) default NULL,
  `customer_who_asked_for_a_written_confirmation_of_it_all` int(11) default NULL
) ENGINE=InnoDB;
