// The program that the store's tests run as another process.
//
//   StoreWriter marks FILE NAME           writes marks of the writer NAME after the last one in
//                                         the file, and says the number of each once it is
//                                         written, until it is killed
//   StoreWriter keys FILE PREFIX COUNT    writes so many keys PREFIX.0, PREFIX.1 ...
//   StoreWriter serve FILE                answers "get KEY" and "set KEY TEXT", a line each
//   StoreWriter hold FILE TEXT...         runs SQL statements, says "held", and keeps the locks
//                                         that they took until its input ends
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "platform/linux/store/SqliteDefaultsStore.h"
#include "tests/platform/linux/store/RawSqlite.h"
#include "tests/platform/linux/store/StoreMarks.h"

namespace tavo {
namespace {

int writeMarks(const std::string& file, const std::string& name) {
    const auto store = makeSqliteDefaultsStore(file);
    const std::optional<int> last = lastMark(*store, name);
    if (!last) {
        std::fprintf(stderr, "the store is broken\n");
        return 1;
    }
    for (int number = *last + 1;; ++number) {
        store->set(markKey(name, number), markValue(number));
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}

int writeKeys(const std::string& file, const std::string& prefix, int count) {
    const auto store = makeSqliteDefaultsStore(file);
    for (int i = 0; i < count; ++i) {
        store->set(prefix + "." + std::to_string(i), Data{std::to_string(i)});
    }
    return 0;
}

int serve(const std::string& file) {
    const auto store = makeSqliteDefaultsStore(file);
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb;
        std::string key;
        std::string text;
        words >> verb >> key >> text;
        if (verb == "set") {
            store->set(key, Data{text});
            std::cout << "set" << std::endl;
        } else {
            std::cout << store->data(key).value_or("(absent)") << std::endl;
        }
    }
    return 0;
}

int hold(const std::string& file, int count, char** statements) {
    RawSqlite database(file);
    for (int i = 0; i < count; ++i) {
        database.run(statements[i]);
    }
    std::cout << "held" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
    }
    return 0;
}

}  // namespace
}  // namespace tavo

int main(int count, char** arguments) {
    const std::string verb = count > 2 ? arguments[1] : "";
    if (verb == "marks" && count == 4) {
        return tavo::writeMarks(arguments[2], arguments[3]);
    }
    if (verb == "keys" && count == 5) {
        return tavo::writeKeys(arguments[2], arguments[3], std::atoi(arguments[4]));
    }
    if (verb == "serve") {
        return tavo::serve(arguments[2]);
    }
    if (verb == "hold") {
        return tavo::hold(arguments[2], count - 3, arguments + 3);
    }
    std::fprintf(stderr, "usage: StoreWriter marks|keys|serve|hold FILE ...\n");
    return 2;
}
