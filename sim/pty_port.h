// The instrument's end of the serial line: the master side of a pseudo-terminal in raw mode.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumora::sim {

class PtyPort {
public:
    PtyPort() = default;
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;
    ~PtyPort();

    // Opens the pseudo-terminal. Returns an empty string, or what went wrong.
    std::string open();
    // Makes a symlink at `path` to the slave, replacing an older symlink there (never a file).
    std::string link(const std::string& path);

    int fd() const { return master_; }
    const std::string& slave_path() const { return slave_path_; }

    // Reads what the PC wrote; empty when nothing is there.
    std::vector<std::uint8_t> read();
    // Writes one reply in a single write(). If nobody has read the terminal for so long that its buffer
    // is full, the stale input is thrown away, as a serial line with no listener loses it. Returns false
    // if the reply could not be written whole.
    bool write(const std::vector<std::uint8_t>& bytes);

private:
    int master_ = -1;
    int slave_ = -1; // held open so a client closing the terminal never hangs up the master
    std::string slave_path_;
    std::string link_path_;
};

} // namespace lumora::sim
