// FreePort.h - ports for servers of a test.
#pragma once

namespace neb::test {

/// Returns a TCP port of the loopback interface that is free. Another process may take it before
/// the server does; the caller then tries another one. Throws if no port is free.
[[nodiscard]] int freePort();

}  // namespace neb::test
