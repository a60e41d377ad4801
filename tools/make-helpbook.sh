#!/bin/sh
# Builds Vantori's help book from data/help/ into
# data/res/vantori/doc/doc.zip, the book for the embedded HTML help (project
# .hhp, contents .hhc, index .hhk and the pages, all at the top of the zip).
# The pages themselves are laid out as plain files in res/vantori/doc/html/
# by the build, for the external help program that config.ini names.
# The zip is reproducible: fixed time stamps, sorted names.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
src=$root/data/help
out=$root/data/res/vantori/doc

mkdir -p "$out"
python3 - "$src" "$out/doc.zip" <<'EOF'
import os
import sys
import zipfile

src, dest = sys.argv[1], sys.argv[2]
names = sorted(n for n in os.listdir(src)
               if n.endswith(('.hhp', '.hhc', '.hhk', '.html', '.htm', '.png')))
tmp = dest + '.tmp'
with zipfile.ZipFile(tmp, 'w', zipfile.ZIP_DEFLATED) as z:
    for n in names:
        info = zipfile.ZipInfo(n, date_time=(2026, 1, 1, 0, 0, 0))
        info.compress_type = zipfile.ZIP_DEFLATED
        info.external_attr = 0o644 << 16
        with open(os.path.join(src, n), 'rb') as f:
            z.writestr(info, f.read())
os.replace(tmp, dest)
print('help book written to', dest, '(%d files)' % len(names))
EOF
