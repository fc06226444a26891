#include "NEBFoundation/NEBSourceControlOperation.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <new>
#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/StandardLibrary.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;
using testing::HasSubstr;

TEST(SourceControlOperation, TheBaseDoesNothing) {
    NEBSourceControlOperation operation(requestFor(NEBSourceControlRequestIgnore, std::nullopt));
    operation.start();
    EXPECT_TRUE(operation.isFinished());
    EXPECT_EQ(operation.result(), std::nullopt);
    EXPECT_EQ(operation.error(), std::nullopt);
    EXPECT_FALSE(operation.command().has_value());
    EXPECT_EQ(operation.descriptionForAssertionMessage(), "<NEBSourceControlOperation>");
}

TEST(SourceControlOperation, DoesNotBeginAfterItWasCancelled) {
    class Marking : public NEBSourceControlOperation {
    public:
        using NEBSourceControlOperation::NEBSourceControlOperation;
        void main() override { ran = true; }
        bool ran = false;
    };
    Marking operation(requestFor(NEBSourceControlRequestIgnore, std::nullopt));
    operation.cancel();
    operation.start();
    EXPECT_FALSE(operation.ran);
    EXPECT_TRUE(operation.isFinished());
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
}

TEST(SourceControlOperation, IsNullWithoutARequest) {
    EXPECT_EQ(initWithRequest<NEBSourceControlOperation>(nullptr), nullptr);
    const auto request = requestFor(NEBSourceControlRequestIgnore, std::nullopt);
    EXPECT_EQ(initWithRequest<NEBSourceControlOperation>(request)->request(), request);
}

TEST(SourceControlOperation, AnExceptionBecomesItsError) {
    class Throwing : public NEBSourceControlOperation {
    public:
        using NEBSourceControlOperation::NEBSourceControlOperation;
        void main() override { throw std::runtime_error("a reason"); }
    };
    Throwing operation(requestFor(NEBSourceControlRequestIgnore, std::nullopt));
    operation.start();
    EXPECT_TRUE(operation.isFinished());
    EXPECT_THAT(operation.error(),
                IsSourceControlError(-1, "The operation could not be completed: a reason."));
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlUnknownErrorClass));
}

TEST(SourceControlOperation, MissingMemoryHasItsOwnClass) {
    class Throwing : public NEBSourceControlOperation {
    public:
        using NEBSourceControlOperation::NEBSourceControlOperation;
        void main() override {
            if (request()->type == NEBSourceControlRequestIgnore) {
                throw std::bad_alloc();
            }
            std::string().resize(std::string().max_size() + 1);
        }
    };
    for (const std::int32_t type : {NEBSourceControlRequestIgnore, NEBSourceControlRequestRemove}) {
        Throwing operation(requestFor(type, std::nullopt));
        operation.start();
        EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlOutOfMemoryErrorClass));
        EXPECT_THAT(operation.error(), IsSourceControlError(-1, HasSubstr("not enough memory")));
    }
}

TEST(SourceControlOperation, TheEndOfItsThreadIsNotAnError) {
    if (standardLibrary.starts_with("libc++")) {
        GTEST_SKIP() << "see Platform/ThreadEnd.h";
    }
    class Ending : public NEBSourceControlOperation {
    public:
        using NEBSourceControlOperation::NEBSourceControlOperation;
        void main() override { ::pthread_exit(nullptr); }
    };
    Ending operation(requestFor(NEBSourceControlRequestIgnore, std::nullopt));
    std::thread([&operation] { operation.start(); }).join();
    EXPECT_FALSE(operation.isFinished());
    EXPECT_EQ(operation.error(), std::nullopt);
}

}  // namespace
}  // namespace neb
