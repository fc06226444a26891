# Moves the zsh completions to vendor-completions, where the zsh of Debian reads those of packages.
# Other systems, and /usr/local, use site-functions.
set(zsh ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share/zsh)
file(RENAME ${zsh}/site-functions ${zsh}/vendor-completions)
