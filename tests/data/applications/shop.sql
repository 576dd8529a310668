# A shop, written by hand.
DROP TABLE IF EXISTS order_item, orders, product, customer;
CREATE TABLE customer (
  id INTEGER UNSIGNED NOT NULL AUTO_INCREMENT PRIMARY KEY,
  email VARCHAR(190) NOT NULL UNIQUE,
  password CHAR(60) BINARY,
  joined TIMESTAMP DEFAULT CURRENT_TIMESTAMP,
  seen TIMESTAMP,
  active BOOL DEFAULT TRUE,
  note TEXT COMMENT 'two
lines'
);
CREATE TABLE IF NOT EXISTS product (
  id SERIAL,
  sku VARCHAR(40) NOT NULL,
  price DEC(10,2) DEFAULT 0,
  kind ENUM('book','toy ') DEFAULT 'book' NOT NULL,
  attributes JSON,
  UNIQUE (sku), INDEX (price), INDEX (kind, price), FULLTEXT (sku)
) ENGINE=InnoDB CHARACTER SET utf8mb4;
CREATE TABLE orders (
  id BIGINT AUTO_INCREMENT,
  customer INTEGER UNSIGNED REFERENCES customer (id) ON DELETE SET NULL,
  placed DATETIME DEFAULT NOW() ON UPDATE NOW(),
  PRIMARY KEY (id), CHECK (placed > 0)
);
CREATE TABLE order_item (
  `order` BIGINT NOT NULL, product BIGINT UNSIGNED NOT NULL, amount SMALLINT(5) DEFAULT '1',
  PRIMARY KEY (`order`, product),
  FOREIGN KEY (`order`) REFERENCES orders (id) ON DELETE CASCADE,
  FOREIGN KEY (product) REFERENCES product (id)
);
