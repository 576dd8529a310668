create table a_b(only_here int);
create table aXb(z int);
create table kinds(id int unsigned not null auto_increment primary key, ti tinyint, tu tinyint unsigned,
  s smallint unsigned, b bigint unsigned, bs bigint, m mediumint, d decimal(30,10) not null default 1.5, r float,
  f double, c char(5), v varchar(40) default 'x', t text, lt longtext, bi binary(3), vb varbinary(30), bl longblob,
  da date, tm time, dt datetime(6), ts timestamp null, y year, bt bit(1), bits bit(9), e enum('a','b'), nn int null);
insert into kinds values (4000000000, -128, 255, 65535, 18446744073709551615, -9223372036854775808, -8388608,
  12345678901234567890.0123456789, 0.1, 0.30000000000000004, 'ab', 'zwölf Ω 😀', 'text', repeat('ä', 100000), x'00ff10',
  x'ff', repeat(x'00', 300000), '2001-02-03', '04:05:06', '2001-02-03 04:05:06.5', '2001-02-03 04:05:06', 1999, 1, 257,
  'b', 7);
insert into kinds(id, da, tm, bt) values (4000000001, '0000-00-00', '-01:00:00', 0);
create table keyed(y int, x int, u varchar(10) unique, primary key(x, y), key n(u, x));
create table OnlyHere(x int);
create view v as select 1 one;
create table `it's "so"`(`spalte ``ü` int primary key);
insert into `it's "so"` values (7);
create table `größe Ω`(`spalte ``ü` int primary key);
create table `a``b`(`spalte ``ü` int primary key);
create table `back\slash`(`spalte ``ü` int primary key);
create table `50%_`(`spalte ``ü` int primary key);
insert into `50%_` values (7);
