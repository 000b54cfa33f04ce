// Makes numbered marks in a model over the store in FILE until it is killed, from the first one
// that the store lacks. Says the number of each once its operation has returned.
//
//   MarkWriter FILE
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
