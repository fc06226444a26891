// CloneWithoutSubmodules.h - the operation of a clone that leaves submodules out.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

/// Clones without submodules. The request's own operation always clones them.
class CloneWithoutSubmodulesOperation : public NEBSourceControlTaskOperation {
public:
    explicit CloneWithoutSubmodulesOperation(std::shared_ptr<NEBSourceControlRequest> request)
        : NEBSourceControlTaskOperation(std::move(request)) {
        std::vector<std::string> arguments{"clone", "-q"};
        const NEBValue& branch = this->request()->option(NEBSourceControlRequestOptionBranch);
        if (branch.isPresent()) {
            arguments.insert(arguments.end(), {"--branch", branch.description()});
        }
        const std::string destination = this->request()->destination.description();
        arguments.insert(arguments.end(), {*this->request()->sourceTree->location, destination});
        setArguments(std::move(arguments));
        setCurrentDirectoryPath(destination);
        setMayRunHooks(true);
    }

    [[nodiscard]] std::string className() const override {
        return "CloneWithoutSubmodulesOperation";
    }
    [[nodiscard]] std::string launchPath() override { return gitPath(); }
};

}  // namespace neb::nebsc
