#pragma once

#include "formats/evtx_value.h"

#include <optional>
#include <vector>

namespace quoril::evtx {

/// Where in an event's document a piece of binary XML stands.
enum class Place : quint8
{
    Document,
    Event,
    System,
    Provider,
    EventId,
    Level,
    Task,
    Keywords,
    TimeCreated,
    EventRecordId,
    Computer,
    Security,
    EventData,
    Data,
    Binary,
    UserData,
    UserRoot,
    UserItem,
    Other,
    // Attribute values.
    ProviderName,
    EventSourceName,
    Qualifiers,
    SystemTime,
    UserId,
};

/// One step of making an event from a piece of binary XML.
struct Step
{
    enum class Kind : quint8
    {
        Literal, ///< `literal` is text of `place`
        Substitution, ///< the instance's value `index` is content of `place`
        Instance, ///< a template instance at chunk offset `index` is content of `place`
        Body, ///< System is done, strings and data follow
        BeginString,
        EndString,
    };

    Kind kind;
    Place place = Place::Other;
    quint32 index = 0;
    bool optional = false; ///< a Substitution by no value leaves out the element
    QString literal = {};
};

/// The steps of a piece of binary XML: what is left of a template once everything that no field of an
/// event asks for is gone.
using Program = std::vector<Step>;

/// The parts of a template instance token.
struct Instance
{
    quint32 definition = 0; ///< chunk offset of the template's definition
    quint32 values = 0; ///< chunk offset of the value count
    quint32 end = 0; ///< chunk offset after the values, or the limit if they are cut
};

/// The instance whose token stands at `offset`, within `limit`; none if it is damaged.
std::optional<Instance> readInstance(QByteArrayView chunk, quint32 offset, quint32 limit);

/// Compiles the binary XML from `offset` to `limit` as content of `place`. A damaged piece gives the steps
/// up to the damage.
Program compile(QByteArrayView chunk, quint32 offset, quint32 limit, Place place);

/// As compile(), for the template whose definition stands at `definition`.
Program compileTemplate(QByteArrayView chunk, quint32 definition, Place place);

} // namespace quoril::evtx
