#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <utility>
#include <vector>

namespace quoril {

/// Measured values in the text format of Prometheus and OpenMetrics, UTF-8. The samples of a family stand
/// together after its head.
class MetricsText
{
public:
    using Label = std::pair<const char*, QStringView>;

    /// `common` are labels that every sample gets, the first ones.
    explicit MetricsText(const std::vector<std::pair<QString, QString>>& common);

    void family(const char* name, const char* help);
    /// A sample of the family that was begun last.
    void sample(std::initializer_list<Label> labels, double value);
    /// The whole text, its closing line included.
    QByteArray take();

    /// Whether a text may name a label: letters, digits and "_", no digit first, no "__" first.
    static bool isLabelName(QStringView name);
    /// A label's value with what the format escapes, in UTF-8. A zero unit becomes U+FFFD, half a character
    /// "?".
    static QByteArray escaped(QStringView value);

private:
    QByteArray m_text;
    QByteArray m_family;
    QByteArray m_common; ///< escaped, a comma at its end unless it is empty
};

} // namespace quoril
