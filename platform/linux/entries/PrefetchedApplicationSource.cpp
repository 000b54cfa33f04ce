#include "platform/linux/entries/PrefetchedApplicationSource.h"

#include <future>
#include <utility>

namespace tavo {
namespace {

class PrefetchedApplicationSource final : public ApplicationSource {
public:
    explicit PrefetchedApplicationSource(std::unique_ptr<ApplicationSource> source)
        : source_(std::move(source)),
          prefetched_(std::async(std::launch::async, [this] { return source_->applications(); })) {}

    std::vector<FoundApplication> applications() override {
        return prefetched_.valid() ? prefetched_.get() : source_->applications();
    }

private:
    const std::unique_ptr<ApplicationSource> source_;
    std::future<std::vector<FoundApplication>> prefetched_;  // its destructor waits for the thread
};

}  // namespace

std::unique_ptr<ApplicationSource> makePrefetchedApplicationSource(
    std::unique_ptr<ApplicationSource> source) {
    return std::make_unique<PrefetchedApplicationSource>(std::move(source));
}

}  // namespace tavo
