// ErrorCatalogueRows.h - the tables of the error catalogue.
//
// To find the row of a message, search this folder for a part of the message in lower case. A
// comment behind a pattern names the only version of git, or the only other program, that prints
// it.
#pragma once

#include <span>

#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRow.h"

namespace neb {

/// Returns the tables in order of precedence: the first row that matches decides. Thread-safe, as
/// are all functions here.
[[nodiscard]] std::span<const ErrorCatalogueTable> errorCatalogueTables();

// The tables, in that order, each in the file of its name.
[[nodiscard]] ErrorCatalogueTable errorMachineRows();
[[nodiscard]] ErrorCatalogueTable errorConfigurationRows();
[[nodiscard]] ErrorCatalogueTable errorDamageRows();
[[nodiscard]] ErrorCatalogueTable errorConnectionRows();
[[nodiscard]] ErrorCatalogueTable errorPushRows();
[[nodiscard]] ErrorCatalogueTable errorWorkingCopyRows();
[[nodiscard]] ErrorCatalogueTable errorNameRows();
[[nodiscard]] ErrorCatalogueTable errorCommitRows();
[[nodiscard]] ErrorCatalogueTable errorProgramRows();
[[nodiscard]] ErrorCatalogueTable errorConsequenceRows();

/// Returns the rows that count only if no other row matches, and only for lines that begin with
/// "fatal:" or "error:", because hooks and other programs print such messages, too.
[[nodiscard]] ErrorCatalogueTable errorGeneralRows();

}  // namespace neb
