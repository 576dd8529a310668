create table a_b(x int, y int, primary key(y, x));
create table aXb(z int);
create table items(id integer primary key autoincrement, name varchar(40) not null default 'x', c char(5),
  price decimal(10,2), big bigint, ubig bigint unsigned, small smallint unsigned, t text, b blob, d date, tm time,
  ts timestamp, f float, bo boolean, ti tinyint, n nvarchar(40));
create index n1 on items(name, c);
insert into items values (7, 'zwölf Ω 😀', 'ab', '12.50', 9223372036854775807, 4000000000, 65535, 'long', x'00ff10',
  '2001-02-03', '04:05:06', '2001-02-03 04:05:06', 0.1, 1, 200, 'it''s');
insert into items(name, big, d, b) values ('', 'many', 'someday', x'');
create table long(a text, b blob);
with recursive n(i) as (select 1 union all select i + 1 from n where i < 100000)
  insert into long select group_concat('ä', ''), zeroblob(300000) from n;
create view v as select 1 one;
create table "größe ""q"" 'x' Ω"("spalte ü" int, b text unique);
insert into "größe ""q"" 'x' Ω" values (7, null);
