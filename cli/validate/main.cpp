// afx-validate: the validator as a program of its own, with the options of
// `afx validate`.
#include <string>
#include <vector>

#include "ValidateCommand.h"

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    return afv::runValidateCommand(arguments);
}
