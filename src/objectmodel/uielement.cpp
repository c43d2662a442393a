#include "objectmodel/uielement.h"

#include <algorithm>

namespace Vantrel {

UiElement::UiElement() = default;

UiElement::~UiElement() = default;

UiElement *UiElement::addChild()
{
    m_children.push_back(std::make_unique<UiElement>());
    return m_children.back().get();
}

void UiElement::setProperty(const QString &property, const QString &value)
{
    const auto known =
        std::find_if(m_properties.begin(), m_properties.end(),
                     [&property](const auto &entry) { return entry.first == property; });
    if (known != m_properties.end()) {
        known->second = value;
    } else {
        m_properties.emplace_back(property, value);
    }
}

DumpFilter::~DumpFilter() = default;

} // namespace Vantrel
