#include "platform/linux/store/SqliteDefaultsStore.h"

#include <cstdio>
#include <functional>
#include <map>
#include <utility>

#include "platform/MainThreadPoster.h"
#include "platform/linux/store/SqliteStoreFile.h"
#include "platform/linux/system/XdgFolders.h"
#include "support/Json.h"

namespace tavo {
namespace {

constexpr std::chrono::seconds kBetweenTries{30};

constexpr const char* kData = "data";
constexpr const char* kArray = "array";
constexpr const char* kDictionary = "dictionary";

// The row for `value`; absent when it holds text that has no JSON form.
std::optional<SqliteRow> rowOf(const DefaultsValue& value) {
    if (const auto* const data = std::get_if<Data>(&value)) {
        return SqliteRow{kData, data->bytes, false};
    }
    const auto* const array = std::get_if<StringArray>(&value);
    std::optional<std::string> text =
        array != nullptr ? json::write(*array) : json::write(std::get<StringDictionary>(value));
    if (!text) {
        return std::nullopt;
    }
    return SqliteRow{array != nullptr ? kArray : kDictionary, std::move(*text), true};
}

class SqliteDefaultsStore final : public DefaultsStore {
public:
    SqliteDefaultsStore(const std::string& file, MainQueue* queue) : file_(file) {
        if (queue != nullptr) {
            mainThread_.emplace(*queue);
        }
    }
    SqliteDefaultsStore(const SqliteDefaultsStore&) = delete;
    SqliteDefaultsStore& operator=(const SqliteDefaultsStore&) = delete;
    ~SqliteDefaultsStore() override { writePending(SqliteStoreFile::kPatience); }

    std::optional<std::string> data(std::string_view key) const override {
        if (const DefaultsValue* const pending = pendingValue(key)) {
            const auto* const data = std::get_if<Data>(pending);
            return data != nullptr ? std::optional(data->bytes) : std::nullopt;
        }
        std::optional<SqliteRow> row = file_.read(key);
        if (!row || row->type != kData || row->isText) {
            return std::nullopt;
        }
        return std::move(row->value);
    }

    std::optional<StringArray> stringArray(std::string_view key) const override {
        return decoded<StringArray>(key, kArray, json::readStringArray);
    }

    std::optional<StringDictionary> stringDictionary(std::string_view key) const override {
        return decoded<StringDictionary>(key, kDictionary, json::readStringDictionary);
    }

    void set(std::string_view key, const DefaultsValue& value) override {
        pending_.insert_or_assign(std::string(key), value);
        writePending(SqliteStoreFile::kPatience);
    }

private:
    [[nodiscard]] const DefaultsValue* pendingValue(std::string_view key) const {
        const auto found = pending_.find(key);
        return found != pending_.end() ? &found->second : nullptr;
    }

    template<typename Value>
    [[nodiscard]] std::optional<Value> decoded(
        std::string_view key, std::string_view type,
        std::optional<Value> (*read)(std::string_view text)) const {
        if (const DefaultsValue* const pending = pendingValue(key)) {
            const auto* const value = std::get_if<Value>(pending);
            return value != nullptr ? std::optional(*value) : std::nullopt;
        }
        const std::optional<SqliteRow> row = file_.read(key);
        if (!row || row->type != type || !row->isText) {
            return std::nullopt;
        }
        return read(row->value);
    }

    // Tries every pending value, also after a refusal: a disk with no room for one value may have
    // room for another.
    void writePending(std::chrono::milliseconds patience) {
        const Deadline until = std::chrono::steady_clock::now() + patience;
        std::optional<std::string> refusal;
        bool mayYetSucceed = false;
        for (auto next = pending_.begin(); next != pending_.end();) {
            const std::optional<SqliteRow> row = rowOf(next->second);
            const SqliteOutcome outcome = row ? file_.write(next->first, *row, until)
                                              : SqliteOutcome{SqliteOutcome::Kind::Refused,
                                                              "a value has text that is not UTF-8"};
            if (outcome.done()) {
                next = pending_.erase(next);
                continue;
            }
            refusal = refusal ? refusal : outcome.reason;
            mayYetSucceed = mayYetSucceed || (row && !file_.name().empty());
            ++next;
        }
        if (refusal && !said_) {
            std::fprintf(stderr, "tavolauncher: cannot write %s: %s; kept until a later write\n",
                         file_.name().empty() ? "the settings" : file_.name().c_str(),
                         refusal->c_str());
        }
        said_ = refusal.has_value();
        if (mayYetSucceed) {
            tryAgainLater();
        }
    }

    // Later writes the values that were refused. Does not wait for a lock then, because the window
    // would freeze long after the user's action.
    void tryAgainLater() {
        if (!mainThread_ || std::exchange(trying_, true)) {
            return;
        }
        mainThread_->postAfter(kBetweenTries, [this] {
            trying_ = false;
            writePending(std::chrono::milliseconds(0));
        });
    }

    // Mutable: reading may open the file anew.
    mutable SqliteStoreFile file_;
    // The values that the file does not hold yet, mostly none.
    std::map<std::string, DefaultsValue, std::less<>> pending_;
    bool said_ = false;
    bool trying_ = false;  // the next try waits in the main queue
    std::optional<MainThreadPoster> mainThread_;
};

}  // namespace

std::string defaultStoreFile() {
    const std::string folder = XdgFolders::fromProcess().dataHome;
    return folder.empty() ? "" : folder + "/tavolauncher/defaults.sqlite";
}

std::unique_ptr<DefaultsStore> makeSqliteDefaultsStore(const std::string& file, MainQueue* queue) {
    return std::make_unique<SqliteDefaultsStore>(file, queue);
}

}  // namespace tavo
