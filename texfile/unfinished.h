// Files that are being written. What ends the program amid that removes them first.
#pragma once

#include <functional>
#include <string>

namespace texfile {

// Lets exit(), which the palette quantizer calls without memory, and SIGINT, SIGTERM and SIGHUP remove what
// is unfinished before they end the program; signals that are ignored stay so. To be called before any other
// thread starts.
void RemoveUnfinishedAtTheEnd();

// Runs `begin`, which makes the file and says whether it did; if so, the file is unfinished. `begin` does not
// throw.
bool BeginUnfinished(const std::string& name, const std::function<bool()>& begin);

// Runs `end`, which renames or removes the file; it is unfinished no more.
void EndUnfinished(const std::string& name, const std::function<void()>& end);

}  // namespace texfile
