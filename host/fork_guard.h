// Whether this process is a child forked from one in which the .NET runtime ran.
//
// The runtime does not survive fork: the child has none of the runtime's threads (the garbage
// collector's and finaliser's among them), so the first managed call there can wait forever,
// and at exit a shutdown would too. Every entry to managed code, handle releases included,
// tests the flag first; the child then only raises (or, for a release, leaks the handle).
#pragma once

namespace host_fork_detail {
// Set in the child by a fork handler; read on every call, so a plain flag.
extern bool forked_child;
}  // namespace host_fork_detail

inline bool host_in_forked_child() noexcept { return host_fork_detail::forked_child; }
