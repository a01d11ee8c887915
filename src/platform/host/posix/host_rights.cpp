#include "platform/host/posix/host_rights.h"

#include <array>
#include <cerrno>
#include <sys/xattr.h>
#include <unistd.h>

namespace quoril {

namespace {

constexpr mode_t GroupBits = S_IRWXG;
constexpr mode_t OtherBits = S_IRWXO;
constexpr mode_t OthersMayWrite = S_IWGRP | S_IWOTH;
constexpr const char* AccessList = "system.posix_acl_access";

/// What others may do in the folder with a file that somebody else made.
mode_t sharedBits(const struct stat& folder)
{
    const mode_t bits = folder.st_mode & (GroupBits | OtherBits);
    return (folder.st_mode & S_ISVTX) != 0 ? bits & ~OthersMayWrite : bits;
}

HostRights rightsIn(const struct stat& folder, mode_t mode)
{
    return {folder.st_uid, folder.st_gid, mode};
}

mode_t asStrangers(mode_t mode)
{
    return (mode & ~GroupBits) | (mode & GroupBits & (mode & OtherBits) << 3U);
}

/// False if the list can't be given. A list that the folder put on the file goes where the other has none.
bool giveAccessList(int file, int other)
{
    std::array<char, 4096> list;
    const ssize_t size = ::fgetxattr(other, AccessList, list.data(), list.size());
    if (size > 0)
        return ::fsetxattr(file, AccessList, list.data(), static_cast<std::size_t>(size), 0) == 0;
    const bool hasNone = errno != ERANGE;
    ::fremovexattr(file, AccessList);
    return hasNone;
}

} // namespace

HostRights rightsOfFileIn(const struct stat& folder)
{
    constexpr mode_t execution = S_IXGRP | S_IXOTH;
    return rightsIn(folder, S_IRUSR | S_IWUSR | (sharedBits(folder) & ~execution));
}

HostRights rightsOfFolderIn(const struct stat& folder)
{
    return rightsIn(folder, S_IRWXU | (folder.st_mode & S_ISGID) | sharedBits(folder));
}

HostRights rightsOfLockIn(const struct stat& folder)
{
    const mode_t shared = sharedBits(folder);
    mode_t mode = S_IRUSR | S_IWUSR;
    if ((shared & S_IWGRP) != 0)
        mode |= S_IRGRP | S_IWGRP;
    if ((shared & S_IWOTH) != 0)
        mode |= S_IROTH | S_IWOTH;
    return rightsIn(folder, mode);
}

void giveRights(int file, HostRights rights)
{
    // Only root may give a file away, and another user to his own groups alone.
    const bool hasGroup = ::fchown(file, rights.owner, rights.group) == 0
        || ::fchown(file, static_cast<uid_t>(-1), rights.group) == 0;
    ::fchmod(file, hasGroup ? rights.mode : asStrangers(rights.mode));
}

void giveRightsOf(int file, int other)
{
    struct stat status = {};
    if (::fstat(other, &status) != 0)
        return;
    const mode_t mode = status.st_mode & (S_IRWXU | GroupBits | OtherBits);
    const HostRights rights{status.st_uid, status.st_gid, mode};
    // With a list, the group's bits of a mode say what the list gives at most.
    if (giveAccessList(file, other))
        giveRights(file, rights);
    else
        giveRights(file, {rights.owner, rights.group, asStrangers(mode)});
}

} // namespace quoril
