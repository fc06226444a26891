#include "Program.h"

int main(int argc, char** argv) {
    return neb::nebsc::runProgram(argc, argv);
}
