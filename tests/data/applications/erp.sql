-- Modules create their tables, and later ones add to them.
create table company (id int not null auto_increment, name varchar(128), primary key (id));
create table account (rowid integer AUTO_INCREMENT PRIMARY KEY, entity integer DEFAULT 1 NOT NULL, fk_company integer, number varchar(32) NOT NULL, active tinyint DEFAULT 1 NOT NULL, datec datetime, tms timestamp DEFAULT CURRENT_TIMESTAMP ON UPDATE CURRENT_TIMESTAMP)ENGINE=innodb;
ALTER TABLE account ADD UNIQUE INDEX uk_account_number (number, entity);
ALTER TABLE account ADD INDEX idx_account_company (fk_company);
ALTER TABLE account ADD CONSTRAINT fk_account_company FOREIGN KEY (fk_company) REFERENCES company (id);
create table booking (rowid integer AUTO_INCREMENT PRIMARY KEY, fk_account integer NOT NULL, amount double(24,8) DEFAULT 0, label varchar(255)) ENGINE=innodb;
ALTER TABLE booking ADD CONSTRAINT FOREIGN KEY (fk_account) REFERENCES account (rowid);
ALTER TABLE booking MODIFY COLUMN label varchar(200) AFTER rowid;
ALTER TABLE booking CHANGE amount total decimal(24,8) DEFAULT 0 NOT NULL;
ALTER TABLE booking ADD COLUMN fk_user integer, ADD COLUMN extra varchar(14) FIRST, ADD KEY (fk_user);
ALTER TABLE company COMMENT='all of them';
CREATE INDEX idx_booking_label ON booking (label(20));
DROP INDEX idx_booking_label ON booking;
