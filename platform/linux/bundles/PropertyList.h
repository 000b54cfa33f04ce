// Property lists, as far as the facts of an application bundle need them.
//
// XML property lists only (PropertyList-1.0.dtd: plist, dict, key, string …). The file is somebody
// else's and may be anything: it must be a regular file of at most 1 MiB, nested at most 64 deep,
// well-formed to its end, and must declare no entities of its own. Any thread.
#pragma once

#include <map>
#include <string>

namespace tavo {

// The string values directly inside the root dictionary, by key, UTF-8; of a key that comes twice
// the last one. Empty when the file is anything but what is said above.
std::map<std::string, std::string> readPropertyListStrings(const std::string& file);

}  // namespace tavo
