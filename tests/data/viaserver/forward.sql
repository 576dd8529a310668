/*!40014 SET @OLD_FOREIGN_KEY_CHECKS=@@FOREIGN_KEY_CHECKS, FOREIGN_KEY_CHECKS=0 */;
# children first, and keys that nobody named
create table child (id int primary key, p int, q int references later (id),
  foreign key (p) references later (id) on delete cascade, unique (p, q), unique key (q));
create table later (id int primary key, at timestamp, name char(3), key (name), fulltext (name));
/*M!100100 create or replace table later (id int primary key, code varchar(2000), key (code), constraint `check` check (id <> 7)) */;
/*!80000 drop table later */;
/*!80000 create table later (id int primary key, code varchar(2000), key (code(700)), constraint `check` check (id <> 7)) */;
create temporary table work (a int);
drop temporary table work;
create table gone (a int); drop table gone;
alter table child drop primary key, add primary key (id, p), change q r int not null first, comment = 'a; b';
create table swap (a int); rename table later to swap2, swap to later, swap2 to swap;
alter table swap add unique key (code(10));
alter table later partition by hash (a) partitions 3;
/*!40000 ALTER TABLE child ENABLE KEYS */;
/*M!100100 alter table later add b int unsigned zerofill */;
/*!40014 SET FOREIGN_KEY_CHECKS=@OLD_FOREIGN_KEY_CHECKS */;
