#pragma once

#include <sys/stat.h>
#include <sys/types.h>

namespace quoril {

/// Whose a file of a tree is to be, and who may do what with it.
struct HostRights
{
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;
};

/// What a folder gives to a file, folder or lock that is made in it. A lock is for those who may write the
/// folder. In a folder that everybody may add to and nobody may clear, a file is its maker's.
HostRights rightsOfFileIn(const struct stat& folder);
HostRights rightsOfFolderIn(const struct stat& folder);
HostRights rightsOfLockIn(const struct stat& folder);

/// Gives the open file those rights, as far as this user may: who gets it in the place of the group that is
/// meant may do no more with it than everybody.
void giveRights(int file, HostRights rights);

/// Gives it owner, group, mode and access list of the other open file.
void giveRightsOf(int file, int other);

} // namespace quoril
