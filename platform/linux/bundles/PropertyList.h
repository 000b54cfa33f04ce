// Property lists (PropertyList-1.0.dtd) in XML, as far as application bundles need them.
#pragma once

#include <map>
#include <string>

namespace tavo {

// The strings directly inside the root dictionary, by key, in UTF-8; of a key that comes twice, the
// last one. Empty unless `file` is a regular file of at most 1 MiB whose XML is well-formed to its
// end, at most 64 levels deep, and declares no entities. Any thread.
std::map<std::string, std::string> readPropertyListStrings(const std::string& file);

}  // namespace tavo
