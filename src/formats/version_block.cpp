#include "formats/version_block.h"

#include "formats/name_case.h"

#include <QtEndian>

#include <algorithm>
#include <optional>
#include <span>

namespace quoril {

namespace {

using Bytes = std::span<const uchar>;

quint16 numberAt(Bytes bytes, std::size_t place)
{
    return qFromLittleEndian<quint16>(bytes.data() + place);
}

std::size_t aligned(std::size_t place)
{
    return (place + 3) & ~std::size_t(3);
}

/// The units from the place to the first zero unit or the end of the bytes.
QString textAt(Bytes bytes, std::size_t place)
{
    QString text;
    for (; place + 2 <= bytes.size() && numberAt(bytes, place) != 0; place += 2)
        text.append(QChar(numberAt(bytes, place)));
    return text;
}

/// One node of the tree that a version block is: a name, a value and the nodes below it. Places count from
/// the node's start, which is aligned to 4 bytes.
struct Node
{
    static constexpr std::size_t HeaderSize = 6;

    QString name;
    Bytes value;
    Bytes children;
};

/// The node at the start of the bytes, and its length; nothing where there is none or its header lies.
std::optional<std::pair<Node, std::size_t>> takeNode(Bytes bytes)
{
    if (bytes.size() < Node::HeaderSize)
        return std::nullopt;
    // Some tools count padding into a length that isn't there.
    const std::size_t length = std::min<std::size_t>(numberAt(bytes, 0), bytes.size());
    if (length < Node::HeaderSize)
        return std::nullopt;
    bytes = bytes.first(length);
    const bool isText = numberAt(bytes, 4) == 1;
    Node node{textAt(bytes, Node::HeaderSize), {}, {}};
    const std::size_t nameEnd = Node::HeaderSize + 2 * (std::size_t(node.name.size()) + 1);
    const Bytes afterName = bytes.subspan(std::min(aligned(nameEnd), length));
    // The size of a text counts units, but some tools count bytes: the node's end bounds both.
    const std::size_t size = numberAt(bytes, 2) * std::size_t(isText ? 2 : 1);
    node.value = afterName.first(std::min(size, afterName.size()));
    node.children = afterName.subspan(std::min(aligned(node.value.size()), afterName.size()));
    return std::pair(node, length);
}

std::optional<Node> childOf(const Node& parent, QStringView name)
{
    Bytes rest = parent.children;
    while (const auto child = takeNode(rest)) {
        if (foldedEquals(child->first.name, name))
            return child->first;
        rest = rest.subspan(std::min(aligned(child->second), rest.size()));
    }
    return std::nullopt;
}

std::optional<Node> descendantOf(const Node& root, std::initializer_list<QStringView> path)
{
    std::optional<Node> node = root;
    for (const QStringView name : path)
        node = node ? childOf(*node, name) : std::nullopt;
    return node;
}

} // namespace

Result<QString> fileVersionOf(const QByteArray& versionBlock)
{
    const auto root = takeNode(
        {reinterpret_cast<const uchar*>(versionBlock.constData()), std::size_t(versionBlock.size())});
    if (!root)
        return Error{error::ResourceDataNotFound, {}};
    const auto translation = descendantOf(root->first, {u"VarFileInfo", u"Translation"});
    if (!translation || translation->value.size() < 4)
        return Error{error::ResourceTypeNotFound, {}};
    const QString table = QStringLiteral("%1%2")
                              .arg(numberAt(translation->value, 0), 4, 16, QChar(u'0'))
                              .arg(numberAt(translation->value, 2), 4, 16, QChar(u'0'));
    const auto version = descendantOf(root->first, {u"StringFileInfo", table, u"FileVersion"});
    if (!version)
        return Error{error::ResourceNameNotFound, {}};
    return textAt(version->value, 0);
}

} // namespace quoril
