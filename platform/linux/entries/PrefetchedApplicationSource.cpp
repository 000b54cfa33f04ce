#include "platform/linux/entries/PrefetchedApplicationSource.h"

#include <system_error>
#include <thread>
#include <utility>

namespace tavo {
namespace {

class PrefetchedApplicationSource final : public ApplicationSource {
public:
    explicit PrefetchedApplicationSource(std::unique_ptr<ApplicationSource> source)
        : source_(std::move(source)) {
        try {
            thread_ = std::thread([this] { prefetched_ = source_->applications(); });
        } catch (const std::system_error&) {
            // No thread to be had: the first call scans as the later ones do.
        }
    }

    ~PrefetchedApplicationSource() override {
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    PrefetchedApplicationSource(const PrefetchedApplicationSource&) = delete;
    PrefetchedApplicationSource& operator=(const PrefetchedApplicationSource&) = delete;

    std::vector<FoundApplication> applications() override {
        if (thread_.joinable()) {
            thread_.join();
            return std::move(prefetched_);
        }
        return source_->applications();
    }

private:
    const std::unique_ptr<ApplicationSource> source_;
    std::vector<FoundApplication> prefetched_;  // written by thread_ alone until it is joined
    std::thread thread_;
};

}  // namespace

std::unique_ptr<ApplicationSource> makePrefetchedApplicationSource(
    std::unique_ptr<ApplicationSource> source) {
    return std::make_unique<PrefetchedApplicationSource>(std::move(source));
}

}  // namespace tavo
