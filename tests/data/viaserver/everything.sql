-- an application's own file
CREATE DATABASE IF NOT EXISTS `shop`;
USE `shop`;
SET NAMES utf8mb4;
DROP TABLE IF EXISTS users, orders;
create table users (id serial, email varchar(120) unique, parent bigint unsigned references users(id), name text, index (name(20)));
CREATE TABLE `shop`.`orders` (id int unsigned auto_increment primary key, uid bigint unsigned, note varchar(2000),
  foreign key (uid) references shop.users (id) on delete cascade, key (note(500)));
create unique index u1 on orders (uid, id);
alter table orders add column total decimal(10,2) default 0.00 after uid, add key (total);
alter table orders add ts timestamp, add doc text charset latin1, add check (orders.total >= 0);
insert into users (email) values ('create table x (a int);');
/*!50100 alter table orders add column extra int */;
/*!40000 ALTER TABLE orders DISABLE KEYS */;
create table archive like orders;
create table tmp1 (a int) comment 'it''s; x';
rename table tmp1 to tmp2, archive to old_orders;
alter table tmp2 rename to shop.final, modify a bigint not null default 7 /* why */;
create index n2 on orders (note(20)); drop index n2 on orders;
DELIMITER //
create procedure p() begin create table zz (a int); end //
DELIMITER ;
drop procedure p;
create table parts (a int not null, b date) partition by range (a) (partition p0 values less than (10), partition p1 values less than maxvalue);
