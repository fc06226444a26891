// NEBPlugIn.h - all headers that a plug-in needs.
//
// A plug-in exports a description (NEBSourceControlPlugIn.h) with the factory of its principal
// class (NEBSourceControlProtocol.h), which makes an operation for each request
// (NEBSourceControlProgramOperation.h). A record parser (NEBSourceControlRecordParser.h) turns a
// list into records while the program runs. docs/plug-ins.md is the guide.
#pragma once

// IWYU pragma: begin_exports
#include "NEBFoundation/NEBFoundation.h"
#include "NEBFoundation/NEBSourceControlProgramOperation.h"
#include "NEBFoundation/NEBSourceControlProtocol.h"
#include "NEBFoundation/NEBSourceControlRecordParser.h"
#include "NEBFoundation/NEBSourceControlText.h"
// IWYU pragma: end_exports
