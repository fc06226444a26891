// The main program of every test executable.

#include <gmock/gmock.h>

#include "Support/TestRepository.h"

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    neb::test::isolateFromMachine();
    return RUN_ALL_TESTS();
}
