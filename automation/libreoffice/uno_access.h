// SPDX-License-Identifier: Apache-2.0
//
// Short forms of what UNO calls are made of.
#pragma once

#include <initializer_list>
#include <string_view>
#include <vector>

#include <com/sun/star/beans/PropertyValue.hpp>
#include <com/sun/star/beans/XPropertySet.hpp>
#include <com/sun/star/uno/Any.hxx>
#include <com/sun/star/uno/Reference.hxx>
#include <com/sun/star/uno/Sequence.hxx>
#include <rtl/ustring.hxx>

namespace office {

namespace css = com::sun::star;
using css::uno::Any;
using css::uno::Reference;
using css::uno::Sequence;
using rtl::OUString;

// UNO's unit of UTF-16 is an integer of the same size.

inline OUString to_uno(std::u16string_view text) {
    return OUString(reinterpret_cast<const sal_Unicode*>(text.data()),
                    static_cast<sal_Int32>(text.size()));
}

inline std::u16string_view view_of(const OUString& text) {
    return {reinterpret_cast<const char16_t*>(text.getStr()),
            static_cast<std::size_t>(text.getLength())};
}

/// Another interface of an object; throws css::uno::RuntimeException when it does not have it.
template <class Interface, class Source>
Reference<Interface> as(const Source& object) {
    return Reference<Interface>(object, css::uno::UNO_QUERY_THROW);
}

/// A property as a value of its type; throws css::uno::Exception when there is none, gives the
/// type's first value where the property holds another type.
template <class Value, class Object>
Value property(const Reference<Object>& object, const char* name) {
    Value value{};
    as<css::beans::XPropertySet>(object)->getPropertyValue(OUString::createFromAscii(name)) >>=
        value;
    return value;
}

template <class Object, class Value>
void set_property(const Reference<Object>& object, const char* name, const Value& value) {
    as<css::beans::XPropertySet>(object)->setPropertyValue(OUString::createFromAscii(name),
                                                           Any(value));
}

inline css::beans::PropertyValue named(const char* name, const Any& value) {
    css::beans::PropertyValue pair;
    pair.Name = OUString::createFromAscii(name);
    pair.Value = value;
    return pair;
}

template <class Element>
Sequence<Element> sequence_of(const std::vector<Element>& elements) {
    return Sequence<Element>(elements.data(), static_cast<sal_Int32>(elements.size()));
}

} // namespace office
