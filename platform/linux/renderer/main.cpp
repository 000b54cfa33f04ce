// icon-renderer: draws picture files for the launcher, in a process that may do little else, so
// that a picture which is hostile or broken costs one icon. Its standard output is the socket of
// Protocol.h.
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

#include "platform/linux/renderer/Confinement.h"
#include "platform/linux/renderer/Picture.h"
#include "platform/linux/renderer/Protocol.h"
#include "platform/posix/BoundedFile.h"

namespace tavo {
namespace {

constexpr int kSocket = STDOUT_FILENO;
constexpr std::size_t kLargestFile = std::size_t{16} << 20U;  // bytes

// Does not ask for 0 bytes: recv(2) would then wait for others to arrive.
bool receive(void* into, std::size_t count) {
    return count == 0 || ::recv(kSocket, into, count, MSG_WAITALL) == static_cast<ssize_t>(count);
}

bool send(const void* from, std::size_t count) {
    const auto* bytes = static_cast<const char*>(from);
    while (count > 0) {
        const ssize_t sent = ::send(kSocket, bytes, count, MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes += sent;
        count -= static_cast<std::size_t>(sent);
    }
    return true;
}

std::vector<std::uint32_t> draw(const std::string& path, int side) {
    const auto file = readBoundedFile(path, kLargestFile);
    const auto* const bytes = std::get_if<std::string>(&file);
    return bytes != nullptr ? drawPicture(*bytes, side) : std::vector<std::uint32_t>();
}

// False when the launcher has closed the socket, or has sent an invalid request.
bool answerOne() {
    IconRequest request;
    if (!receive(&request, sizeof request) || request.side < 1 || request.side > kLargestIconSide ||
        request.pathLength > kLongestIconPath) {
        return false;
    }
    std::string path(request.pathLength, '\0');
    if (!receive(path.data(), path.size())) {
        return false;
    }
    setTimeLimit();
    const std::vector<std::uint32_t> pixels = draw(path, static_cast<int>(request.side));
    clearTimeLimit();
    const auto count = static_cast<IconPixelCount>(pixels.size());
    return send(&count, sizeof count) && send(pixels.data(), pixels.size() * sizeof pixels[0]);
}

}  // namespace
}  // namespace tavo

int main() {
    tavo::confineRenderer();
    while (tavo::answerOne()) {
    }
    // Skips the destructors of the libraries, which have nothing to save.
    ::_exit(0);
}
