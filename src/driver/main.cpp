#include <string>
#include <vector>

#include "driver/driver.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return RunVurl(args);
}
