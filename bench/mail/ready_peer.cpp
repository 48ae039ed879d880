// Sends one ready message over and over, in the two writes a message that pipelining allows, and
// does nothing else: what no client that sends one message at a time can pass on the same machine.
// Usage: ready_peer MESSAGE COUNT PORT; the message ends in the final full stop.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

void Send(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) std::exit(1);
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

// Reads until as many last lines of replies have come, all of them 2xx or 3xx.
void ReadReplies(int connection, int count) {
  std::string line;
  while (count > 0) {
    std::array<char, 4096> bytes;
    const ssize_t received = recv(connection, bytes.data(), bytes.size(), 0);
    if (received <= 0) std::exit(1);
    for (const char byte : std::string_view(bytes.data(), static_cast<std::size_t>(received))) {
      if (byte != '\n') {
        line += byte;
        continue;
      }
      if (line.size() < 4 || (line[0] != '2' && line[0] != '3')) std::exit(1);
      count -= line[3] == ' ' ? 1 : 0;
      line.clear();
    }
  }
}

}  // namespace

int main(int argument_count, char** arguments) {
  if (argument_count != 4) return 2;
  std::ifstream file(arguments[1], std::ios::binary);
  const std::string message{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(arguments[3])));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
    return 1;
  const int on = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  ReadReplies(connection, 1);
  Send(connection, "EHLO client.example\r\n");
  ReadReplies(connection, 1);
  for (int rest = std::atoi(arguments[2]); rest > 0; --rest) {
    Send(connection,
         "MAIL FROM:<marketing@agency.example>\r\nRCPT "
         "TO:<ann.smith000000@example.com>\r\nDATA\r\n");
    ReadReplies(connection, 3);
    Send(connection, message);
    ReadReplies(connection, 1);
  }
  Send(connection, "QUIT\r\n");
  close(connection);
}
