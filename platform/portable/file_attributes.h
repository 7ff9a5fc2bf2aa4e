#pragma once

namespace fliglaf::platform {

/// Gives the new file `to` the permissions of `from`, and its owner, group, access control list and
/// extended attributes where that is allowed. Both are descriptors. Throws std::system_error.
void CopyAttributes(int from, int to);

}  // namespace fliglaf::platform
