#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"

#include <array>

namespace neb {

std::span<const ErrorCatalogueTable> errorCatalogueTables() {
    static const std::array tables{
        errorMachineRows(), errorConfigurationRows(), errorDamageRows(), errorConnectionRows(),
        errorPushRows(),    errorWorkingCopyRows(),   errorNameRows(),   errorCommitRows(),
        errorProgramRows(), errorConsequenceRows(),
    };
    return tables;
}

}  // namespace neb
