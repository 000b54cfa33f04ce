// Marks applications one after the other until it is killed, and says the number of each mark once
// its operation has returned:
//
//   MarkWriter FILE     goes on after the last mark that the store in FILE holds
#include <cstdio>

#include "tests/app/StoredModel.h"

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: MarkWriter FILE\n");
        return 2;
    }
    tavo::StoredModel model(arguments[1]);
    int number = 1;
    while (tavo::hasMark(*model, number)) {
        ++number;
    }
    for (;; ++number) {
        tavo::setMark(*model, number);
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}
