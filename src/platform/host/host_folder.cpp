#include "platform/host/host_folder.h"

#include "platform/host/host_file.h"

namespace quoril {

namespace {

/// Removes what is in the folder; a link goes and not what it leads to.
void empty(const HostFolder& folder)
{
    for (const QString& name : folder.names()) {
        const HostPlace place{folder, name};
        if (const Result<HostEntry> entry = hostEntry(place); entry && entry->isFolder) {
            if (const Result<HostFolder> below = folder.folder(name))
                empty(*below);
            static_cast<void>(removeHostFolder(place));
        } else {
            static_cast<void>(removeHostFile(place));
        }
    }
}

} // namespace

QString HostPlace::path() const
{
    if (name == u".")
        return folder.path();
    // A folder that is a whole disk ends in a separator itself.
    return folder.path().endsWith(u'/') ? folder.path() + name : folder.path() + u'/' + name;
}

NewHostFolder::~NewHostFolder()
{
    if (!m_state)
        return;
    empty(m_state->held);
    static_cast<void>(removeHostFolder(m_state->outer));
}

} // namespace quoril
