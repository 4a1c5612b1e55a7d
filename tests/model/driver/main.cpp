// Runs sequences of operations, one line of JSON each, and prints what every operation gave: see tests/model/README.md.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

#include "tests/model/driver/Sequence.h"

namespace {

constexpr unsigned SECONDS_PER_SEQUENCE = 60;

/** In the process of the sequence. @return its exit code */
int RunHere(const Json& sequence, EStoreMake eStore) {
    ::alarm(SECONDS_PER_SEQUENCE);
    try {
        RunSequence(sequence, eStore, std::cout);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "sequence " << sequence.value("seed", Json()) << ": " << error.what() << std::endl;
        return EXIT_FAILURE;
    }
}

/** Runs the sequence in a process of its own and says how that ended: 0, its exit code, or its signal below zero. */
void RunApart(const Json& sequence, EStoreMake eStore) {
    const pid_t iChild = ::fork();
    if (iChild < 0) {
        std::perror("fork");
        std::exit(EXIT_FAILURE);
    }
    if (iChild == 0) {
        std::exit(RunHere(sequence, eStore));
    }
    int iStatus = 0;
    ::waitpid(iChild, &iStatus, 0);
    const int iEnd = WIFSIGNALED(iStatus) ? -WTERMSIG(iStatus) : WEXITSTATUS(iStatus);
    std::cout << Json({{"end", iEnd}}).dump() << std::endl;
}

}  // namespace

int main(int iCount, char** aArguments) {
    const std::string strStore = iCount == 3 ? aArguments[1] : "";
    if (strStore != "memory:" && strStore != "sqlite") {
        std::cerr << "usage: dlp_model_driver memory:|sqlite FILE\n";
        return EXIT_FAILURE;
    }
    const EStoreMake eStore = strStore == "sqlite" ? EStoreMake::SQLITE : EStoreMake::MEMORY;
    std::ifstream file(aArguments[2]);
    for (std::string strLine; std::getline(file, strLine);) {
        RunApart(Json::parse(strLine), eStore);
    }
    return file.eof() ? EXIT_SUCCESS : EXIT_FAILURE;
}
