"""repack.py ZIP YEAR MONTH DAY HOUR MINUTE SECOND
Packs a zip again: its files in order, and all of one time.
"""

import sys
import zipfile

path, *time = sys.argv[1:]
with zipfile.ZipFile(path) as packed:
    files = [(entry, packed.read(entry)) for entry in packed.infolist()]
with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as packed:
    for entry, content in sorted(files, key=lambda file: file[0].filename):
        again = zipfile.ZipInfo(entry.filename, tuple(map(int, time)))
        again.compress_type = zipfile.ZIP_STORED if entry.is_dir() else zipfile.ZIP_DEFLATED
        again.external_attr = entry.external_attr  # the permissions
        packed.writestr(again, content)
