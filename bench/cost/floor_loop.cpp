// The least that asking some addresses every two seconds costs at all: one thread, one kept connection, no library.
// Usage: floor_loop TOKEN-FILE PORT PATH...

#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int connectTo(int port)
{
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(connection, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return connection;
    ::close(connection);
    return -1;
}

// False when the connection is of no more use.
bool ask(int connection, const std::string &path, const std::string &token)
{
    const std::string request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nX-Zemrak-Admin: " + token + "\r\n\r\n";
    if (::send(connection, request.data(), request.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request.size()))
        return false;
    static std::array<char, 65536> piece;
    std::string head;
    std::size_t headEnd = std::string::npos;
    std::size_t received = 0;
    std::size_t expected = 1;
    while (received < expected) {
        const ssize_t count = ::recv(connection, piece.data(), piece.size(), 0);
        if (count <= 0)
            return false;
        received += static_cast<std::size_t>(count);
        if (headEnd != std::string::npos)
            continue;
        head.append(piece.data(), static_cast<std::size_t>(count));
        headEnd = head.find("\r\n\r\n");
        const char *length = ::strcasestr(head.c_str(), "\r\ncontent-length:");
        if (headEnd == std::string::npos)
            expected = received + 1;
        else if (length == nullptr)
            return false;
        else
            expected = headEnd + 4 + std::strtoul(length + 17, nullptr, 10);
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    int connection = -1;
    for (;;) {
        std::ifstream file(argv[1]);
        const std::string token((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        for (int i = 3; i < argc; ++i) {
            if (connection < 0)
                connection = connectTo(std::atoi(argv[2]));
            if (connection >= 0 && !ask(connection, argv[i], token)) {
                ::close(connection);
                connection = -1;
            }
        }
        const timespec pause{2, 0};
        ::nanosleep(&pause, nullptr);
    }
}
