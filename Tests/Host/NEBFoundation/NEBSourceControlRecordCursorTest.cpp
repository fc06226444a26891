#include "NEBFoundation/NEBSourceControlRecordCursor.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <stdexcept>
#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/ListOperation.h"
#include "Support/Matchers.h"
#include "Support/SettledText.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::ListOperation;
using test::namesOf;
using test::settledText;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class RecordCursor : public test::HygienicTest {
protected:
    void TearDown() override {
        cursor.reset();
        HygienicTest::TearDown();
    }
    /// Creates the cursor of an operation that lists what the script prints.
    NEBSourceControlRecordCursor& open(const std::string& script) {
        operation = std::make_shared<ListOperation>(script);
        return cursor.emplace(operation);
    }
    std::vector<std::string> next(std::size_t pageSize) {
        const auto page = cursor->next(pageSize);
        isLast = page.isLast;
        return namesOf(page.records);
    }
    /// Returns the process id that the script prints first.
    pid_t firstProcess() {
        const pid_t process = std::stoi(next(1).at(0));
        EXPECT_TRUE(test::isLiveProcess(process));
        return process;
    }

    std::shared_ptr<ListOperation> operation;
    std::optional<NEBSourceControlRecordCursor> cursor;
    bool isLast = false;
};

TEST_F(RecordCursor, ReturnsPages) {
    open("seq 10");
    EXPECT_THAT(next(4), ElementsAre("1", "2", "3", "4"));
    EXPECT_FALSE(isLast);
    EXPECT_THAT(next(4), ElementsAre("5", "6", "7", "8"));
    EXPECT_THAT(next(4), ElementsAre("9", "10"));
    EXPECT_TRUE(isLast);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->deliveredRecordCount(), 10U);
    EXPECT_THAT(next(4), IsEmpty());
    EXPECT_TRUE(isLast);
}

TEST_F(RecordCursor, ReturnsAPageWhileTheChildRuns) {
    const TemporaryFolder folder;
    open("echo one; echo two; while ! [ -e " + folder.path("seen") +
         " ]; do sleep 0.01; done; echo three");
    EXPECT_THAT(next(2), ElementsAre("one", "two"));
    EXPECT_FALSE(isLast);
    folder.write("seen", "");
    EXPECT_THAT(next(2), ElementsAre("three"));
    EXPECT_TRUE(isLast);
}

TEST_F(RecordCursor, ReturnsAllRecordsInOrderWhateverThePageSize) {
    for (const std::size_t size : {0U, 1U, 511U, 512U, 513U, 3000U, 7000U}) {
        open("seq 5000");
        std::size_t count = 0;
        for (isLast = false; !isLast;) {
            const std::vector<std::string> names = next(size);
            ASSERT_TRUE(isLast || names.size() == std::max<std::size_t>(size, 1));
            for (const std::string& name : names) {
                ASSERT_EQ(name, std::to_string(++count));
            }
        }
        EXPECT_EQ(count, 5000U) << size;
    }
}

TEST_F(RecordCursor, HoldsTheChildBackBetweenPages) {
    const TemporaryFolder folder;
    open(
        "echo $$; i=0; while [ $i -lt 400 ]; do head -c 10000 /dev/zero; echo; i=$((i+1)); "
        "echo $i > " +
        folder.path("count") + "; done");
    const pid_t child = firstProcess();
    const std::string count = settledText([&folder] { return folder.read("count"); });
    EXPECT_TRUE(test::isLiveProcess(child));
    EXPECT_LT(std::stoi(count), 400);
    EXPECT_EQ(next(5000).size(), 400U);
    EXPECT_TRUE(isLast);
    EXPECT_EQ(operation->error(), std::nullopt);
}

TEST_F(RecordCursor, ReportsTheFailureAfterTheRecords) {
    open("echo one; echo two; echo broken >&2; exit 3");
    EXPECT_THAT(next(2), ElementsAre("one", "two"));
    while (!isLast) {
        EXPECT_THAT(next(2), IsEmpty());
    }
    EXPECT_EQ(operation->error()->text, "broken");
}

TEST_F(RecordCursor, ThrowsWhatTheWorkThrows) {
    cursor.emplace([](const NEBSourceControlRecordSink&) { throw std::runtime_error("no"); },
                   [] {});
    EXPECT_THROW(static_cast<void>(cursor->next(1)), std::runtime_error);
}

// ---- the end ----------------------------------------------------------------------------------

TEST_F(RecordCursor, EndsTheChildWhenItIsClosed) {
    open("echo $$; exec sleep 1000");
    const pid_t child = firstProcess();
    cursor->close();
    EXPECT_FALSE(test::isLiveProcess(child));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_THAT(next(1), IsEmpty());
    EXPECT_TRUE(isLast);
}

TEST_F(RecordCursor, EndsAPausedChildWithTheObject) {
    open("echo $$; exec yes");
    const pid_t child = firstProcess();
    cursor.reset();
    EXPECT_FALSE(test::isLiveProcess(child));
}

TEST_F(RecordCursor, StartsNothingIfItIsClosedBefore) {
    const TemporaryFolder folder;
    open("touch " + folder.path("started"));
    cursor->close();
    EXPECT_THAT(next(1), IsEmpty());
    EXPECT_TRUE(isLast);
    EXPECT_TRUE(cursor->isCancelled());
    cursor.reset();
    EXPECT_FALSE(std::filesystem::exists(folder.path("started")));
}

TEST_F(RecordCursor, CanBeCancelledWhileAPageIsAwaited) {
    open("echo $$; echo two; exec sleep 1000");
    const pid_t child = firstProcess();
    std::thread canceller([this] { cursor->cancel(); });
    EXPECT_THAT(next(100), IsEmpty()) << "what was not returned is discarded";
    EXPECT_TRUE(isLast);
    EXPECT_FALSE(test::isLiveProcess(child));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    canceller.join();
}

}  // namespace
}  // namespace neb
