// NEBFoundation.h - all headers that a host needs.
//
// A host loads the plug-in (NEBSourceControlPlugIn.h), fills a request (NEBSourceControlRequest.h),
// lets the plug-in make its operation (NEBSourceControlProtocol.h), runs that on a queue
// (OperationQueue.h), and reads records or an error (NEBSourceControlOperation.h). docs/hosts.md is
// the guide.
#pragma once

// IWYU pragma: begin_exports
#include "LOMFoundation/LOMAssertion.h"
#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlErrorTexts.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlManager.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "NEBFoundation/NEBSourceControlRecordCursor.h"
#include "NEBFoundation/NEBSourceControlRecording.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "NEBFoundation/NEBSourceControlStatus.h"
#include "Platform/OperationQueue.h"
// IWYU pragma: end_exports
