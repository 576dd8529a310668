"""Writes tables of dBASE and FoxPro into a folder, by Debian's package python3-dbf. Usage: write_dbf.py FOLDER"""

import datetime
import sys
from decimal import Decimal

import dbf


def write(name, kind, code_page, fields, rows, deleted=()):
    table = dbf.Table(f"{sys.argv[1]}/{name}", fields, dbf_type=kind, codepage=code_page)
    table.open()
    for row in rows:
        table.append(row)
    for number in deleted:
        dbf.delete(table[number])
    table.close()


day, last_day = datetime.date(2024, 2, 29), datetime.date(9999, 12, 31)
write("third", "db3", "cp850", "NAME C(12); N N(10,2); WHOLE N(5,0); F F(12,3); L L; D D; M M",
      [("Grün", 12.25, -7, 1.5, True, day, "memo ä"),
       ("", None, None, None, None, None, ""),
       ("last", 9999999.99, 99999, -0.125, False, last_day, "x" * 1500)], [1])
write("clip", "clp", "cp437", "LONG C(300); SHORT C(3)", [("l" * 299, "abc"), ("ö", "")])
write("fox", "fp", "cp1252", "NAME C(12); N N(10,2); D D; M M", [("Größe", -0.5, day, "€" * 400), ("", None, None, "")])
write("visual", "vfp", "cp1252",
      "A C(5) NULL; I I NULL; N N(10,2) NULL; D D NULL; B B; Y Y; T T; L L; M M; G G; BIN C(4) BINARY",
      [("héé", -2147483647, 1.25, day, -1.5e300, Decimal("-922337203685477.5807"),
        datetime.datetime(1999, 12, 31, 23, 59, 59), True, "mémo", b"\x00\xff\x1a", b"\x01\x00 \xff"),
       (dbf.Null, dbf.Null, dbf.Null, dbf.Null, 0.0, Decimal("0.0001"), None, False, "", b"", b"abcd"),
       ("", 0, None, None, 0.1, Decimal(0), datetime.datetime(1, 1, 1), None, "m" * 5000, b"g" * 600, b"    ")])
write("many", "vfp", "cp1252", "ID I; NAME C(20)", [(i, f"row {i}") for i in range(9)], range(0, 9, 2))
