/// What depends on whether people look on: width, colours and progress. A pipe or a file gets everything in full,
/// without colours.
#pragma once

#include <string>

namespace td::dmctl {

enum class Style { Plain, Heading, Good, Bad, Changed };

namespace terminal {

/// Colours without regard to where the output goes; neither: on a terminal only.
void chooseColours(bool always, bool never);
/// Columns of the terminal that standard output is; 0 where it is none.
int width();
/// The text in the colour of a style, or as it is.
std::string painted(const std::string& text, Style style);
/// Whether somebody can be asked: standard input and standard error are terminals.
bool canAsk();

} // namespace terminal

/// A bar on standard error while something long is done, if that is a terminal. It is gone when the object ends.
class Progress {
public:
    /// Nothing is shown for less than two steps.
    Progress(const char* what, int steps);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `done` steps of all are behind us.
    void show(int done);
    void step() { show(m_done + 1); }

private:
    const char* m_what;
    int m_steps;
    int m_done = 0;
    bool m_visible;
};

} // namespace td::dmctl
