// What the copies of one TextRules share. For the inside of this folder.
#pragma once

#include <string>
#include <utility>

#include "support/NameOrder.h"
#include "support/Text.h"
#include "support/TextFolding.h"

namespace tavo {

struct TextRules::Tables {
    Tables(Casing textCasing, std::string locale) : casing(textCasing), order(std::move(locale)) {}

    Casing casing;
    NameOrder order;
};

}  // namespace tavo
