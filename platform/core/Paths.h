#pragma once

#include <string>

namespace platform {

// Per-user folders and directory creation shared by the file-backed services. Internal to
// platform/.
class Paths {
  public:
    // $<variable> when it is an absolute path, else $HOME/<fallback> (XDG base directory rules).
    static std::string xdgDirectory(const char* variable, const std::string& fallback);
    // Creates |path| and its missing parents with |mode|. True when |path| is a directory
    // afterwards; otherwise |error| says why.
    static bool makeDirectories(const std::string& path, unsigned mode, std::string& error);
    // True for a name usable as one path component: not empty, ".", "..", no "/" or NUL.
    static bool isPlainName(const std::string& name);
};

}  // namespace platform
