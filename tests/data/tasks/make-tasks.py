#!/usr/bin/env python3
"""Made the task files of this folder, without any of the program's own code: python3 make-tasks.py

The archive is Python's, the cipher that of OpenSSL's libcrypto (its command cannot take a key of 20 bytes).
"""

import ctypes
import io
import zipfile
from pathlib import Path

SCRAMBLED_KEY = bytes.fromhex("d428763d8e857d037e0dec678bb42e723d7168b9")

MYSQL = """<?xml version="1.0"?>
<root>
  <version>1.0</version>
  <reference_engine>MySQL</reference_engine>
  <reference><server>db1</server><database>shop</database><username>reader</username>\
<password>a&lt;b&amp;c \u010d\U0001f511</password><port>3307</port></reference>
  <target_engine>MySQL</target_engine>
  <target><server></server><database>copy</database><username>root</username><password/><port>3306</port></target>
</root>
"""

TEXT = """<root><version>1.0</version><reference_engine>Text</reference_engine><reference><folder>/data</folder>\
<HDR>Y</HDR><separator>\t</separator></reference><target_engine>MySQL</target_engine><target><server/><database>d\
</database><username/><password/><port>3306</port></target></root>"""


def unscrambled(data, seed=0x5EED1E55):
    result = bytearray()
    for byte in data:
        seed = (seed * 134775813 + 1) % 2**32
        result.append(byte ^ ((seed * 128 >> 32) | 128))
    return bytes(result)


def enciphered(data, key):
    crypto = ctypes.CDLL("libcrypto.so.3")
    schedule = ctypes.create_string_buffer(8192)
    crypto.BF_set_key(schedule, len(key), key)
    result = b""
    for at in range(0, len(data), 8):
        block = ctypes.create_string_buffer(8)
        crypto.BF_ecb_encrypt(data[at : at + 8], block, schedule, 1)
        result += block.raw
    return result


def task(xml, method, names=("item",)):
    archive = io.BytesIO()
    with zipfile.ZipFile(archive, "w", method) as writer:
        for name in names:
            writer.writestr(name, xml.encode("utf-8"))
    data = archive.getvalue()
    count = 8 - len(data) % 8
    return b"VL10" + enciphered(data + bytes([count] * count), unscrambled(SCRAMBLED_KEY))


folder = Path(__file__).parent
(folder / "mysql.vlt").write_bytes(task(MYSQL, zipfile.ZIP_DEFLATED))
(folder / "text.vlt").write_bytes(task(TEXT, zipfile.ZIP_STORED))
(folder / "other-entry.vlt").write_bytes(task(TEXT, zipfile.ZIP_STORED, ["Item"]))
(folder / "two-entries.vlt").write_bytes(task(TEXT, zipfile.ZIP_STORED, ["item", "more"]))
(folder / "too-large.vlt").write_bytes(task(" " * (16 * 1024 * 1024 + 1), zipfile.ZIP_DEFLATED))
