#!/usr/bin/env bash
# Builds the site of the documents in the current folder, where a warning is an error, and reads it in a
# browser.
#
#   site.sh FOLDER_OF_ITS_SETTINGS PYTHON
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
settings=$1

mkdocs --quiet build --config-file "$settings/mkdocs.yml" --site-dir "$PWD/site"
{ cat "$settings/Doxyfile"; echo "OUTPUT_DIRECTORY = $PWD/site"; } | doxygen -
"$2" "$here/site.py" site
