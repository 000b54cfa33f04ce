#include "platform/linux/x11/XSettings.h"

#include <array>
#include <cstdint>
#include <variant>

#include "platform/linux/x11/XcbConnection.h"

namespace tavo {
namespace {

// Reads numbers and texts from the front of the property. Once its bytes have run out, numbers are
// zero and texts empty.
class PropertyReader {
public:
    explicit PropertyReader(std::string_view bytes) : rest_(bytes) {
        highFirst_ = number<std::uint8_t>() != 0;
        take(3);
    }

    [[nodiscard]] bool failed() const { return failed_; }

    std::string_view take(std::size_t count) {
        if (count > rest_.size()) {
            failed_ = true;
            rest_ = {};
            return {};
        }
        const std::string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }

    // Texts are followed by up to three bytes of padding.
    std::string_view padded(std::size_t count) {
        const std::string_view text = take(count);
        take((4 - count % 4) % 4);
        return text;
    }

    template<typename T>
    T number() {
        const std::string_view bytes = take(sizeof(T));
        T value = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const char byte = bytes[highFirst_ ? i : bytes.size() - 1 - i];
            value = static_cast<T>(value << 8 | static_cast<std::uint8_t>(byte));
        }
        return value;
    }

private:
    std::string_view rest_;
    bool highFirst_ = false;
    bool failed_ = false;
};

using Value = std::variant<std::monostate, std::int32_t, std::string>;

// Of a colour, and where there is no such setting, a value without content.
Value valueOf(std::string_view property, std::string_view name) {
    enum Type : std::uint8_t { kInteger = 0, kString = 1, kColor = 2 };
    PropertyReader reader(property);
    reader.number<std::uint32_t>();  // serial
    const auto count = reader.number<std::uint32_t>();
    for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
        const auto type = reader.number<std::uint8_t>();
        reader.take(1);
        const std::string_view settingName = reader.padded(reader.number<std::uint16_t>());
        reader.number<std::uint32_t>();  // serial of its last change
        Value value;
        if (type == kString) {
            value = std::string(reader.padded(reader.number<std::uint32_t>()));
        } else if (type == kInteger) {
            value = static_cast<std::int32_t>(reader.number<std::uint32_t>());
        } else if (type == kColor) {
            reader.take(8);
        } else {
            break;
        }
        if (settingName == name && !reader.failed()) {
            return value;
        }
    }
    return {};
}

template<typename Content>
std::optional<Content> contentOf(const Value& value) {
    const auto* const content = std::get_if<Content>(&value);
    return content != nullptr ? std::optional(*content) : std::nullopt;
}

}  // namespace

std::optional<std::string> xSetting(std::string_view property, std::string_view name) {
    return contentOf<std::string>(valueOf(property, name));
}

std::optional<std::int32_t> xNumberSetting(std::string_view property, std::string_view name) {
    return contentOf<std::int32_t>(valueOf(property, name));
}

std::string readXSettings(const std::string& display) {
    const auto x11 = display.empty() ? nullptr : XcbConnection::open(display);
    if (!x11) {
        return {};
    }
    x11->beginExchange();
    const std::string selection = "_XSETTINGS_S" + std::to_string(x11->screen());
    const auto atoms = x11->atoms(std::array{selection.c_str(), "_XSETTINGS_SETTINGS"});
    const auto manager =
        x11->reply<xcb_get_selection_owner_reply_t>(xcb_get_selection_owner(x11->get(), atoms[0]));
    if (!manager) {
        return {};
    }
    constexpr std::uint32_t kLongest = 262144;  // bytes
    return x11->text(x11->property(manager->owner, atoms[1], XCB_GET_PROPERTY_TYPE_ANY, kLongest));
}

}  // namespace tavo
