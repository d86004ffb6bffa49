#include "Tests/Support/LoopbackSocket.h"

#include "Platform/Foundation/FatalError.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace teralune {

int listenOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, SOMAXCONN) != 0) {
        fatalError("There is no port left to listen at.");
    }
    return listener;
}

int portOf(int socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

} // namespace teralune
