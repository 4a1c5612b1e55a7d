#include <iostream>
#include <string>
#include <vector>

#include "cli/Memory.h"
#include "cli/Signals.h"
#include "cli/Tool.h"

int main(int iArguments, char** apArguments) {
    std::ios::sync_with_stdio(false);
    PrepareMemory();
    Signals::Watch();
    const std::vector<std::string> vecArguments(apArguments + (iArguments > 0 ? 1 : 0), apArguments + iArguments);
    return RunTool(vecArguments, std::cin, std::cout, std::cerr);
}
