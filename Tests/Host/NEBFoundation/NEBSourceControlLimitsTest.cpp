#include "NEBFoundation/NEBSourceControlLimits.h"

#include <gmock/gmock.h>

#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/ScriptOperation.h"

namespace neb {
namespace {

using std::chrono::milliseconds;
using test::HasErrorClass;
using test::script;

class Limits : public test::HygienicTest {};

TEST_F(Limits, TheErrorNamesTheLimit) {
    struct Row {
        const char* script;
        NEBSourceControlLimits limits;
        NEBConstant errorClass;
        const char* description;
    };
    const Row rows[] = {
        {"exec sleep 1000",
         {.silence = milliseconds(50)},
         NEBSourceControlTimedOutErrorClass,
         "\"/bin/sh\" was ended because it wrote nothing for 0.05 seconds."},
        {"exec sleep 1000",
         {.total = milliseconds(120)},
         NEBSourceControlTimedOutErrorClass,
         "The operation was ended because it took longer than 0.12 seconds."},
        {"exec yes",
         {.outputBytes = 5000},
         NEBSourceControlOutputTooLargeErrorClass,
         "\"/bin/sh\" was ended because it wrote more than 5000 bytes."},
        {"exec yes",
         {.outputBytes = 1},
         NEBSourceControlOutputTooLargeErrorClass,
         "\"/bin/sh\" was ended because it wrote more than 1 byte."},
    };
    for (const Row& row : rows) {
        const auto operation = script(row.script);
        operation->setLimits(row.limits);
        operation->start();
        EXPECT_THAT(operation->error(), HasErrorClass(row.errorClass));
        EXPECT_EQ(operation->error()->localizedDescription(), row.description);
        EXPECT_TRUE(operation->error()->localizedRecoverySuggestion());
        EXPECT_EQ(operation->parses, 0) << "the output is incomplete";
    }
}

TEST_F(Limits, TimesAreNamedInSeconds) {
    const auto description = [](int time) {
        return NEBSourceControlTimedOutError(milliseconds(time)).localizedDescription().value();
    };
    const std::string text = "The operation was ended because it took longer than ";
    EXPECT_EQ(description(1000), text + "1 second.");
    EXPECT_EQ(description(30000), text + "30 seconds.");
    EXPECT_EQ(description(2500), text + "2.5 seconds.");
    EXPECT_EQ(description(1), text + "0.001 seconds.");
    EXPECT_EQ(description(-5), text + "0 seconds.");
}

TEST_F(Limits, AnOperationOfAnotherHasWhatIsLeftOfItsTime) {
    const auto outer = script("exec sleep 1000");
    outer->setLimits({.total = milliseconds(100)});
    outer->start();
    const auto inner = script("touch /nosuch/never; exit 0");
    inner->inheritLimits(*outer);
    inner->start();
    EXPECT_THAT(inner->error(), HasErrorClass(NEBSourceControlTimedOutErrorClass));
    EXPECT_EQ(inner->terminationStatus(), std::nullopt) << "nothing was started";
}

/// Has one record, and shows the limits that a child would have.
class OneRecord : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;
    using NEBSourceControlOperation::remainingLimits;
    void main() override { setResult({{NEBDictionary()}}); }
};

TEST_F(Limits, TheTimeOfTheSinkDoesNotCount) {
    constexpr milliseconds total(200);
    const auto request = test::requestFor(NEBSourceControlRequestLog, std::nullopt);
    OneRecord outer(request);
    OneRecord list(request);
    outer.setLimits({.total = total});
    outer.setRecordSink(
        [&](const NEBSourceControlResult& /*records*/) { std::this_thread::sleep_for(total); });
    outer.deliverRecordsOf(list);
    list.inheritLimits(outer);
    list.start();
    EXPECT_EQ(outer.deliveredRecordCount(), 1U);
    outer.start();
    EXPECT_EQ(outer.deliveredRecordCount(), 2U);
    OneRecord next(request);
    next.inheritLimits(outer);
    EXPECT_GT(next.remainingLimits().total, milliseconds(0));
}

TEST_F(Limits, WithoutAnyTheOperationTakesItsTime) {
    const auto operation = script("sleep 0.2; exec head -c 3000000 /dev/zero");
    operation->start();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->data()->size(), 3000000U);
}

}  // namespace
}  // namespace neb
