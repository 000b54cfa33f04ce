// Starting what a desktop entry describes.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Workspace.h"
#include "platform/linux/GioLaunchContext.h"
#include "platform/linux/GioThread.h"

namespace tavo {

// A completion that can be answered from several sides; the first answer is the one that counts.
class OpenAnswer {
public:
    explicit OpenAnswer(OpenCompletion completion) : completion_(std::move(completion)) {}

    void succeed(std::optional<RunningApplication> running) { answer(std::move(running), {}); }
    void fail(Error error) { answer({}, std::move(error)); }

private:
    void answer(std::optional<RunningApplication> running, std::optional<Error> error) {
        if (const OpenCompletion completion = std::exchange(completion_, nullptr)) {
            completion(std::move(running), std::move(error));
        }
    }

    OpenCompletion completion_;
};

// One start of one entry.
struct EntryStart {
    std::string path;
    std::string identifier;
    std::string searchPath;  // PATH as children have it
    std::string home;        // a folder that exists
    std::chrono::milliseconds patience{0};
    LaunchContext context;
    bool identified = false;  // whether the context has an identifier for the start
    std::shared_ptr<OpenAnswer> answer;
};

// On `thread`, which must outlive the start's answer.
void openEntry(GioThread& thread, EntryStart start);

}  // namespace tavo
