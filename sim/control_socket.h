// A UNIX stream socket taking control lines from any number of clients; each line is answered to the
// client that sent it.
#pragma once

#include "sim/line_buffer.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

struct pollfd;

namespace lumora::sim {

class ControlSocket {
public:
    using Handler = std::function<std::string(const std::string& line)>;

    ControlSocket() = default;
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;
    ~ControlSocket();

    // Listens at `path`, replacing a stale socket there (never another kind of file). Returns an empty
    // string, or what went wrong.
    std::string listen(const std::string& path);

    // Adds the listener and every client to a poll set.
    void add_to(std::vector<pollfd>& fds) const;
    // Serves whatever the poll set reports for this socket's descriptors.
    void serve(const std::vector<pollfd>& fds, const Handler& handler);

private:
    void accept_client();
    bool read_client(int fd, const Handler& handler); // false when the client is gone

    int listener_ = -1;
    std::string path_;
    std::map<int, LineBuffer> clients_;
};

} // namespace lumora::sim
