// BrowserStart.h - opens a URL with a secret in the user's browser.
#pragma once

#include <string>

namespace neb::nebsc {

/// Opens the URL in the default browser, with xdg-open. Does nothing without a display. Other users
/// can see the arguments of processes, so xdg-open gets a file that only this user can read and
/// that leads to the URL.
class BrowserStart {
public:
    explicit BrowserStart(const std::string& url);
    BrowserStart(const BrowserStart&) = delete;
    BrowserStart& operator=(const BrowserStart&) = delete;
    /// Removes the file.
    ~BrowserStart();

private:
    std::string _folder, _file;
};

}  // namespace neb::nebsc
