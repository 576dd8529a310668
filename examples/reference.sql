--
-- Database: webshop, structure only
-- As release 5.2 installs it: the database as it should be
--

SET NAMES utf8;
SET FOREIGN_KEY_CHECKS=0;

CREATE TABLE `brands` (
  `id` int(11) NOT NULL auto_increment,
  `name` varchar(80) NOT NULL default '',
  `website` varchar(200) default NULL,
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_name` (`name`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `carriers` (
  `id` int(11) NOT NULL auto_increment,
  `name` varchar(60) NOT NULL default '',
  `tracking_url` varchar(200) default NULL,
  `active` tinyint(1) NOT NULL default '1',
  PRIMARY KEY  (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `categories` (
  `id` int(11) NOT NULL auto_increment,
  `parent_id` int(11) default NULL,
  `name` varchar(80) NOT NULL default '',
  `slug` varchar(80) NOT NULL default '',
  `sort_order` smallint(6) NOT NULL default '0',
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_slug` (`slug`),
  KEY `idx_parent` (`parent_id`),
  CONSTRAINT `fk_categories_parent` FOREIGN KEY (`parent_id`) REFERENCES `categories` (`id`) ON DELETE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `countries` (
  `code` char(2) NOT NULL default '',
  `name` varchar(80) NOT NULL default '',
  `in_eu` tinyint(1) NOT NULL default '0',
  PRIMARY KEY  (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `coupons` (
  `id` int(11) NOT NULL auto_increment,
  `code` varchar(20) NOT NULL default '',
  `percent_off` decimal(5,2) NOT NULL default '0.00',
  `valid_from` date default NULL,
  `valid_until` date default NULL,
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_code` (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `currencies` (
  `code` char(3) NOT NULL default '',
  `name` varchar(40) NOT NULL default '',
  `rate` decimal(12,6) NOT NULL default '1.000000',
  PRIMARY KEY  (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `customer_addresses` (
  `id` int(11) NOT NULL auto_increment,
  `customer_id` int(11) NOT NULL default '0',
  `kind` char(1) NOT NULL default 'S',
  `street` varchar(120) NOT NULL default '',
  `postcode` varchar(12) NOT NULL default '',
  `city` varchar(80) NOT NULL default '',
  `country_code` char(2) NOT NULL default '',
  PRIMARY KEY  (`id`),
  KEY `idx_customer` (`customer_id`),
  KEY `idx_country` (`country_code`),
  CONSTRAINT `fk_addresses_customer` FOREIGN KEY (`customer_id`) REFERENCES `customers` (`id`) ON DELETE CASCADE,
  CONSTRAINT `fk_addresses_country` FOREIGN KEY (`country_code`) REFERENCES `countries` (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `customers` (
  `id` int(11) NOT NULL auto_increment,
  `email` varchar(120) NOT NULL default '',
  `password_hash` varchar(64) NOT NULL default '',
  `first_name` varchar(40) NOT NULL default '',
  `last_name` varchar(80) NOT NULL default '',
  `birthday` date default NULL,
  `created_at` datetime NOT NULL default '0000-00-00 00:00:00',
  `phone` varchar(30) default NULL,
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_email` (`email`),
  KEY `idx_last_name` (`last_name`,`first_name`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `invoices` (
  `id` int(11) NOT NULL auto_increment,
  `order_id` int(11) NOT NULL default '0',
  `invoice_number` varchar(20) NOT NULL default '',
  `issued_on` date default NULL,
  `total` decimal(12,2) NOT NULL,
  PRIMARY KEY  (`id`),
  UNIQUE KEY `idx_number` (`invoice_number`),
  KEY `idx_order` (`order_id`),
  CONSTRAINT `fk_invoices_order` FOREIGN KEY (`order_id`) REFERENCES `orders` (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `loyalty_accounts` (
  `id` int(11) NOT NULL auto_increment,
  `customer_id` int(11) NOT NULL default '0',
  `tier` char(1) NOT NULL default 'B',
  `points` int(11) NOT NULL default '0',
  `joined_on` date default NULL,
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_customer` (`customer_id`),
  CONSTRAINT `fk_loyalty_customer` FOREIGN KEY (`customer_id`) REFERENCES `customers` (`id`) ON DELETE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `loyalty_transactions` (
  `id` int(11) NOT NULL auto_increment,
  `account_id` int(11) NOT NULL default '0',
  `order_id` int(11) default NULL,
  `points` int(11) NOT NULL default '0',
  `booked_at` datetime NOT NULL default '0000-00-00 00:00:00',
  PRIMARY KEY  (`id`),
  KEY `idx_account` (`account_id`,`booked_at`),
  KEY `idx_order` (`order_id`),
  CONSTRAINT `fk_transactions_account` FOREIGN KEY (`account_id`) REFERENCES `loyalty_accounts` (`id`),
  CONSTRAINT `fk_transactions_order` FOREIGN KEY (`order_id`) REFERENCES `orders` (`id`) ON DELETE SET NULL
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `newsletter_subscriptions` (
  `id` int(11) NOT NULL auto_increment,
  `email` varchar(120) NOT NULL default '',
  `customer_id` int(11) default NULL,
  `subscribed_at` datetime NOT NULL default '0000-00-00 00:00:00',
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_email` (`email`),
  KEY `idx_customer` (`customer_id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `order_items` (
  `id` int(11) NOT NULL auto_increment,
  `order_id` int(11) NOT NULL default '0',
  `product_id` int(11) NOT NULL default '0',
  `quantity` int(11) NOT NULL default '1',
  `unit_price` decimal(10,2) NOT NULL default '0.00',
  PRIMARY KEY  (`id`),
  KEY `idx_order` (`order_id`),
  KEY `idx_product` (`product_id`),
  CONSTRAINT `fk_items_order` FOREIGN KEY (`order_id`) REFERENCES `orders` (`id`) ON DELETE CASCADE,
  CONSTRAINT `fk_items_product` FOREIGN KEY (`product_id`) REFERENCES `products` (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `orders` (
  `id` int(11) NOT NULL auto_increment,
  `customer_id` int(11) NOT NULL default '0',
  `shipping_address_id` int(11) default NULL,
  `coupon_id` int(11) default NULL,
  `currency_code` char(3) NOT NULL default 'EUR',
  `status` char(1) NOT NULL default 'N',
  `total` decimal(10,2) NOT NULL default '0.00',
  `placed_at` datetime NOT NULL default '0000-00-00 00:00:00',
  `loyalty_points` int(11) NOT NULL default '0',
  PRIMARY KEY  (`id`),
  KEY `idx_customer` (`customer_id`,`placed_at`),
  KEY `idx_coupon` (`coupon_id`),
  KEY `idx_currency` (`currency_code`),
  CONSTRAINT `fk_orders_customer` FOREIGN KEY (`customer_id`) REFERENCES `customers` (`id`),
  CONSTRAINT `fk_orders_coupon` FOREIGN KEY (`coupon_id`) REFERENCES `coupons` (`id`) ON DELETE SET NULL,
  CONSTRAINT `fk_orders_currency` FOREIGN KEY (`currency_code`) REFERENCES `currencies` (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `payments` (
  `id` int(11) NOT NULL auto_increment,
  `order_id` int(11) NOT NULL default '0',
  `method` varchar(20) NOT NULL default 'card',
  `amount` decimal(10,2) NOT NULL default '0.00',
  `paid_at` datetime default NULL,
  PRIMARY KEY  (`id`),
  KEY `idx_order` (`order_id`),
  CONSTRAINT `fk_payments_order` FOREIGN KEY (`order_id`) REFERENCES `orders` (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `product_images` (
  `id` int(11) NOT NULL auto_increment,
  `product_id` int(11) NOT NULL default '0',
  `file_name` varchar(120) NOT NULL default '',
  `sort_order` smallint(6) NOT NULL default '0',
  PRIMARY KEY  (`id`),
  KEY `idx_product` (`product_id`,`sort_order`),
  CONSTRAINT `fk_images_product` FOREIGN KEY (`product_id`) REFERENCES `products` (`id`) ON DELETE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `product_reviews` (
  `id` int(11) NOT NULL auto_increment,
  `product_id` int(11) NOT NULL default '0',
  `customer_id` int(11) NOT NULL default '0',
  `stars` tinyint(4) NOT NULL default '0',
  `body` longtext,
  `written_at` datetime NOT NULL default '0000-00-00 00:00:00',
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_product_customer` (`product_id`,`customer_id`),
  KEY `idx_customer` (`customer_id`),
  CONSTRAINT `fk_reviews_product` FOREIGN KEY (`product_id`) REFERENCES `products` (`id`) ON DELETE CASCADE,
  CONSTRAINT `fk_reviews_customer` FOREIGN KEY (`customer_id`) REFERENCES `customers` (`id`) ON DELETE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `products` (
  `id` int(11) NOT NULL auto_increment,
  `sku` varchar(24) NOT NULL default '',
  `name` varchar(120) NOT NULL default '',
  `category_id` int(11) NOT NULL default '0',
  `brand_id` int(11) default NULL,
  `tax_class_id` int(11) NOT NULL default '1',
  `price` decimal(10,2) NOT NULL default '0.00',
  `active` tinyint(1) NOT NULL default '1',
  `description` longtext,
  PRIMARY KEY  (`id`),
  UNIQUE KEY `uk_sku` (`sku`),
  KEY `idx_active_name` (`active`,`name`),
  KEY `idx_category` (`category_id`),
  KEY `idx_brand` (`brand_id`),
  KEY `idx_tax_class` (`tax_class_id`),
  CONSTRAINT `fk_products_category` FOREIGN KEY (`category_id`) REFERENCES `categories` (`id`),
  CONSTRAINT `fk_products_brand` FOREIGN KEY (`brand_id`) REFERENCES `brands` (`id`),
  CONSTRAINT `fk_products_tax_class` FOREIGN KEY (`tax_class_id`) REFERENCES `tax_classes` (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `search_log` (
  `id` int(11) NOT NULL auto_increment,
  `term` varchar(100) NOT NULL default '',
  `hits` int(11) NOT NULL default '0',
  `searched_at` datetime NOT NULL default '0000-00-00 00:00:00',
  PRIMARY KEY  (`id`),
  KEY `idx_term` (`term`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `stock_levels` (
  `warehouse_id` int(11) NOT NULL default '0',
  `product_id` int(11) NOT NULL default '0',
  `quantity` int(11) NOT NULL default '0',
  `reorder_level` int(11) NOT NULL default '0',
  PRIMARY KEY  (`warehouse_id`,`product_id`),
  KEY `idx_product` (`product_id`),
  CONSTRAINT `fk_levels_warehouse` FOREIGN KEY (`warehouse_id`) REFERENCES `warehouses` (`id`),
  CONSTRAINT `fk_levels_product` FOREIGN KEY (`product_id`) REFERENCES `products` (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `stock_movements` (
  `id` int(11) NOT NULL auto_increment,
  `warehouse_id` int(11) NOT NULL default '0',
  `product_id` int(11) NOT NULL default '0',
  `quantity` int(11) NOT NULL default '0',
  `moved_at` datetime NOT NULL default '0000-00-00 00:00:00',
  PRIMARY KEY  (`warehouse_id`,`id`),
  KEY `_tmp_autoinc_key` (`id`),
  KEY `idx_product` (`product_id`,`moved_at`),
  CONSTRAINT `fk_movements_product` FOREIGN KEY (`product_id`) REFERENCES `products` (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `suppliers` (
  `id` int(11) NOT NULL auto_increment,
  `name` varchar(80) NOT NULL default '',
  `contact_email` varchar(120) default NULL,
  `country_code` char(2) NOT NULL default '',
  `lead_time_days` smallint(6) NOT NULL default '7',
  PRIMARY KEY  (`id`),
  KEY `idx_country` (`country_code`),
  CONSTRAINT `fk_suppliers_country` FOREIGN KEY (`country_code`) REFERENCES `countries` (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `tax_classes` (
  `id` int(11) NOT NULL auto_increment,
  `name` varchar(40) NOT NULL default '',
  `percent` decimal(5,2) NOT NULL default '0.00',
  PRIMARY KEY  (`id`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

CREATE TABLE `warehouses` (
  `id` int(11) NOT NULL auto_increment,
  `name` varchar(60) NOT NULL default '',
  `country_code` char(2) NOT NULL default '',
  PRIMARY KEY  (`id`),
  KEY `idx_country` (`country_code`),
  CONSTRAINT `fk_warehouses_country` FOREIGN KEY (`country_code`) REFERENCES `countries` (`code`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8;

SET FOREIGN_KEY_CHECKS=1;
