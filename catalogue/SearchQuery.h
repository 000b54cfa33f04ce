// What the text in the search field asks for.
#pragma once

#include <string>
#include <string_view>

namespace tavo {

// Both may be empty, which means no such condition.
struct SearchQuery {
    std::string category;  // lower case
    std::string text;

    bool operator==(const SearchQuery&) const = default;
};

// Terms are separated by spaces (no other white space). The first term that begins with "cat:" or
// "categoria:", in any case, asks for a category; further ones are ignored. All other terms, with
// one space between them, are one piece of text. A bare prefix asks for a category of its own
// name: "cat:" for "cat". A space or colon that carries a combining character is an ordinary
// character of its term.
SearchQuery parseQuery(std::string_view query);

}  // namespace tavo
