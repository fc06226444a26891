#include "HTTPGateway.h"
#include "Program.h"
#include "Session/Credentials/AskpassProgram.h"

int main(int argc, char** argv) {
    if (neb::nebsc::isAskpassProgram(argv[0])) {
        return neb::nebsc::runAskpassProgram(argc, argv);
    }
    const neb::nebsc::HTTPGateway gateway;
    return neb::nebsc::runProgram(argc, argv, &gateway);
}
