#include "ui/Terminal.h"

#include <algorithm>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/core.h>

namespace td::dmctl {

namespace {

constexpr int BAR_COLUMNS = 30;

bool g_coloursAlways = false;
bool g_coloursNever = false;

const char* escapeOf(Style style) {
    switch (style) {
    case Style::Heading:
        return "\x1b[1m";
    case Style::Good:
        return "\x1b[32m";
    case Style::Bad:
        return "\x1b[31m";
    case Style::Changed:
        return "\x1b[33m";
    case Style::Plain:
        break;
    }
    return "";
}

} // namespace

namespace terminal {

void chooseColours(bool always, bool never) {
    g_coloursAlways = always;
    g_coloursNever = never;
}

int width() {
    winsize size = {};
    if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return 0;
    return size.ws_col;
}

std::string painted(const std::string& text, Style style) {
    const bool coloured = !g_coloursNever && (g_coloursAlways || isatty(STDOUT_FILENO) != 0);
    if (!coloured || style == Style::Plain || text.empty())
        return text;
    return escapeOf(style) + text + "\x1b[0m";
}

bool canAsk() {
    return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

} // namespace terminal

Progress::Progress(const char* what, int steps)
    : m_what(what), m_steps(steps), m_visible(steps > 1 && isatty(STDERR_FILENO) != 0) {
    show(0);
}

Progress::~Progress() {
    if (m_visible)
        fmt::print(stderr, "\r\x1b[K");
}

void Progress::show(int done) {
    m_done = std::clamp(done, 0, m_steps);
    if (!m_visible)
        return;
    const int filled = static_cast<int>(static_cast<long long>(BAR_COLUMNS) * m_done / m_steps);
    fmt::print(stderr, "\r{} [{:<{}}] {}/{}\x1b[K", m_what, std::string(static_cast<std::size_t>(filled), '#'),
               BAR_COLUMNS, m_done, m_steps);
    std::fflush(stderr);
}

} // namespace td::dmctl
