#!/bin/sh
# Renews the loader's list of libraries, after the Debian package has come or gone; not where it
# goes below a root that is not the system's own.
set -e
[ -n "${DPKG_ROOT:-}" ] || ldconfig
