# Puts the completions for zsh where Debian's zsh looks for those of packages. Elsewhere, and below
# /usr/local, zsh looks in site-functions.
set(zsh ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share/zsh)
file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
