// A ChildProcess that runs nothing: it answers what a test has set.
#pragma once

#include <map>
#include <utility>

#include "platform/ChildProcess.h"

namespace tavo {

class FakeChildProcess final : public ChildProcess {
public:
    struct Run {
        std::string executable;
        std::vector<std::string> arguments;

        auto operator<=>(const Run&) const = default;
    };

    // From now on `run` gives this output; nullopt: the program cannot be started, or does not end.
    void answer(Run run, std::optional<std::string> output) {
        answers_[std::move(run)] = std::move(output);
    }

    // From now on every run without an answer() of its own gives this output; at first, nullopt.
    void answerAnything(std::optional<std::string> output) { otherwise_ = std::move(output); }

    std::optional<std::string> output(const std::string& executable,
                                      const std::vector<std::string>& arguments) override {
        runs.push_back({executable, arguments});
        const auto found = answers_.find(runs.back());
        return found == answers_.end() ? otherwise_ : found->second;
    }

    std::vector<Run> runs;  // all so far, the oldest first

private:
    std::map<Run, std::optional<std::string>> answers_;
    std::optional<std::string> otherwise_;
};

}  // namespace tavo
