#!/bin/sh
# Updates the cache of the dynamic loader after the Debian package is installed or removed, except
# below another root directory.
set -e
[ -n "${DPKG_ROOT:-}" ] || ldconfig
