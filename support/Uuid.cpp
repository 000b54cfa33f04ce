#include "support/Uuid.h"

#include <cstring>
#include <random>

namespace tavo {

Uuid Uuid::random() {
    // Seeded once a thread from the system's own randomness: a scan makes thousands of these, and
    // a system call for each would cost more than reading the entries.
    thread_local std::mt19937_64 generator = [] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device(),
                           device(), device(), device(), device()};
        return std::mt19937_64(seed);
    }();
    const std::array<std::uint64_t, 2> words{generator(), generator()};
    Uuid uuid;
    std::memcpy(uuid.bytes.data(), words.data(), uuid.bytes.size());
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);
    return uuid;
}

std::string Uuid::text() const {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0x0F];
    }
    return text;
}

}  // namespace tavo
