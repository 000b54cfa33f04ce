#include "platform/linux/x11/XSettings.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

#include <xcb/xcb.h>

namespace tavo {
namespace {

// Takes numbers and texts off the front; once it ran short, everything is zero and empty.
class PropertyReader {
public:
    explicit PropertyReader(std::string_view bytes) : rest_(bytes) {
        foreign_ = number<std::uint8_t>() != (std::endian::native == std::endian::little ? 0 : 1);
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
            const bool lowFirst = (std::endian::native == std::endian::little) != foreign_;
            const std::size_t shift = 8 * (lowFirst ? i : bytes.size() - 1 - i);
            value = static_cast<T>(value |
                                   static_cast<T>(T{static_cast<std::uint8_t>(bytes[i])} << shift));
        }
        return value;
    }

private:
    std::string_view rest_;
    bool foreign_ = false;
    bool failed_ = false;
};

struct Freed {
    void operator()(void* memory) const { std::free(memory); }
};
template<typename T>
using Reply = std::unique_ptr<T, Freed>;

xcb_atom_t atom(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::optional<std::string> readFrom(xcb_connection_t* connection, int screen) {
    const std::string selection = "_XSETTINGS_S" + std::to_string(screen);
    constexpr std::string_view kProperty = "_XSETTINGS_SETTINGS";
    const auto selectionCookie = xcb_intern_atom(
        connection, 1, static_cast<std::uint16_t>(selection.size()), selection.data());
    const auto propertyCookie = xcb_intern_atom(
        connection, 1, static_cast<std::uint16_t>(kProperty.size()), kProperty.data());
    const xcb_atom_t selectionAtom = atom(connection, selectionCookie);
    const xcb_atom_t propertyAtom = atom(connection, propertyCookie);
    if (selectionAtom == XCB_ATOM_NONE || propertyAtom == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, selectionAtom), nullptr));
    if (!owner || owner->owner == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    constexpr std::uint32_t kWords = 65536;
    const Reply<xcb_get_property_reply_t> property(
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, 0, owner->owner, propertyAtom,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, kWords),
                               nullptr));
    if (!property || property->format != 8 || property->bytes_after != 0) {
        return std::nullopt;
    }
    return std::string(static_cast<const char*>(xcb_get_property_value(property.get())),
                       static_cast<std::size_t>(xcb_get_property_value_length(property.get())));
}

}  // namespace

std::optional<std::string> xSetting(std::string_view property, std::string_view name) {
    enum Type : std::uint8_t { kInteger = 0, kString = 1, kColor = 2 };
    PropertyReader reader(property);
    reader.number<std::uint32_t>();  // serial
    const auto count = reader.number<std::uint32_t>();
    for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
        const auto type = reader.number<std::uint8_t>();
        reader.take(1);
        const std::string_view settingName = reader.padded(reader.number<std::uint16_t>());
        reader.number<std::uint32_t>();  // serial of its last change
        if (type == kString) {
            const std::string_view value = reader.padded(reader.number<std::uint32_t>());
            if (settingName == name && !reader.failed()) {
                return std::string(value);
            }
        } else if (type == kInteger || type == kColor) {
            reader.take(type == kInteger ? 4 : 8);
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::string> readXSettings(const std::string& display) {
    if (display.empty()) {
        return std::nullopt;
    }
    int screen = 0;
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(display.c_str(), &screen), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return std::nullopt;
    }
    return readFrom(connection.get(), screen);
}

}  // namespace tavo
