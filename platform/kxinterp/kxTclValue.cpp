#include "kxTclValue.h"

#include <kxinterp/kxPointerRegistry.h>

#include <limits>
#include <string_view>

#include "kxTclText.h"

namespace {

using kxTclValue::TextOf;

// Tcl aborts the process when asked for more; its lengths are of type int and it adds some for
// itself.
constexpr std::size_t LongestText = std::numeric_limits<int>::max() / 2;
constexpr std::size_t LongestList = std::numeric_limits<int>::max() / 32;

std::string_view TypeName(const Tcl_Obj* object) {
    return object->typePtr != nullptr ? std::string_view(object->typePtr->name)
                                      : std::string_view();
}

Tcl_Obj* ListToTcl(const kxStlVector<kxString>& list) {
    if (list.size() > LongestList) {
        return nullptr;
    }
    Tcl_Obj* result = Tcl_NewListObj(0, nullptr);
    for (const kxString& entry : list) {
        Tcl_Obj* object = kxTclValue::ToTcl(entry);
        if (object == nullptr) {
            // Frees the list, which nobody else refers to.
            const kxTclValue::Object unfinished(result);
            return nullptr;
        }
        Tcl_ListObjAppendElement(nullptr, result, object);
    }
    return result;
}

bool ToBoolean(Tcl_Obj* object, kxVariant& result) {
    int value = 0;
    if (Tcl_GetBooleanFromObj(nullptr, object, &value) != TCL_OK) {
        return false;
    }
    result = value != 0;
    return true;
}

bool ToInteger(Tcl_Obj* object, kxVariant& result) {
    Tcl_WideInt value = 0;
    // Numbers of 64 bits without sign would come back negative.
    if (TypeName(object) == "bignum" || Tcl_GetWideIntFromObj(nullptr, object, &value) != TCL_OK ||
        TypeName(object) == "bignum") {
        return false;
    }
    result = static_cast<std::int64_t>(value);
    return true;
}

bool ReadDouble(Tcl_Obj* object, double& value) {
    if (Tcl_GetDoubleFromObj(nullptr, object, &value) == TCL_OK) {
        return true;
    }
    // Tcl refuses to give out NaN, although it has it as a number.
    if (TypeName(object) == "double") {
        value = object->internalRep.doubleValue;
        return true;
    }
    return false;
}

bool ToStringList(Tcl_Obj* object, kxVariant& result) {
    int count = 0;
    Tcl_Obj** entries = nullptr;
    if (Tcl_ListObjGetElements(nullptr, object, &count, &entries) != TCL_OK) {
        return false;
    }
    kxStlVector<kxString> list;
    list.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        list.push_back(TextOf(entries[i]));
    }
    result = kxVariant(std::move(list));
    return true;
}

// A pointer of another type than the one that `result` holds is refused.
bool ToPointer(Tcl_Obj* object, kxVariant& result) {
    void* pointer = nullptr;
    kxString typeName;
    if (!kxPointerRegistry::FromText(TextOf(object), pointer, typeName)) {
        return false;
    }
    const kxString wanted = result.GetPointerTypeName();
    if (!wanted.empty() && wanted != typeName) {
        return false;
    }
    result.SetPointer(pointer, typeName);
    return true;
}

// Tcl keeps what a value was last used as; that is the best guess at what it is.
void Guess(Tcl_Obj* object, kxVariant& result) {
    const std::string_view type = TypeName(object);
    double number = 0;
    if ((type == "int" || type == "wideInt") && ToInteger(object, result)) {
        return;
    }
    if (type == "double" && ReadDouble(object, number)) {
        result = number;
        return;
    }
    if ((type == "boolean" || type == "booleanString") && ToBoolean(object, result)) {
        return;
    }
    if (type == "list" && ToStringList(object, result)) {
        return;
    }
    if (!ToPointer(object, result)) {
        result = TextOf(object);
    }
}

const char* WantedName(kxVariant::Kind kind) {
    switch (kind) {
        case kxVariant::BOOLEAN:
            return "a boolean";
        case kxVariant::INTEGER:
            return "an integer of 64 bits";
        case kxVariant::FLOAT:
        case kxVariant::DOUBLE:
            return "a number";
        case kxVariant::STRINGLIST:
            return "a list";
        case kxVariant::POINTER:
            return "a known pointer of the wanted type";
        case kxVariant::EMPTY:
        case kxVariant::STRING:
            break;
    }
    return "a text";
}

bool Convert(Tcl_Obj* object, kxVariant& result) {
    double number = 0;
    switch (result.GetKind()) {
        case kxVariant::EMPTY:
            Guess(object, result);
            return true;
        case kxVariant::BOOLEAN:
            return ToBoolean(object, result);
        case kxVariant::INTEGER:
            return ToInteger(object, result);
        case kxVariant::STRING:
            result = TextOf(object);
            return true;
        case kxVariant::STRINGLIST:
            return ToStringList(object, result);
        case kxVariant::FLOAT:
            if (!ReadDouble(object, number)) {
                return false;
            }
            result = static_cast<float>(number);
            return true;
        case kxVariant::DOUBLE:
            if (!ReadDouble(object, number)) {
                return false;
            }
            result = number;
            return true;
        case kxVariant::POINTER:
            return ToPointer(object, result);
    }
    return false;
}

}  // namespace

namespace kxTclValue {

Tcl_Obj* ToTcl(const kxString& text) {
    if (text.size() > LongestText) {
        return nullptr;
    }
    const kxString converted = kxTclText::ToTcl(text);
    if (converted.size() > LongestText) {
        return nullptr;
    }
    return Tcl_NewStringObj(converted.data(), static_cast<int>(converted.size()));
}

Tcl_Obj* ToTcl(const kxVariant& value) {
    switch (value.GetKind()) {
        case kxVariant::EMPTY:
            return Tcl_NewObj();
        case kxVariant::BOOLEAN:
            return Tcl_NewBooleanObj(value.GetBoolean() ? 1 : 0);
        case kxVariant::INTEGER:
            return Tcl_NewWideIntObj(value.GetInteger64());
        case kxVariant::STRING:
            return ToTcl(*value.PeekString());
        case kxVariant::STRINGLIST:
            return ListToTcl(*value.PeekStringList());
        case kxVariant::FLOAT:
        case kxVariant::DOUBLE:
            return Tcl_NewDoubleObj(value.GetDouble());
        case kxVariant::POINTER:
            return ToTcl(kxPointerRegistry::ToText(value.GetPointer(), value.GetPointerTypeName()));
    }
    return nullptr;
}

kxString TextOf(Tcl_Obj* object) {
    int count = 0;
    const char* bytes = Tcl_GetStringFromObj(object, &count);
    return kxTclText::FromTcl(bytes, static_cast<std::size_t>(count));
}

bool FromTcl(Tcl_Obj* object, kxVariant& result, kxString& error) {
    if (Convert(object, result)) {
        return true;
    }
    constexpr std::size_t MostShown = 200;
    kxString shown = TextOf(object);
    if (shown.size() > MostShown) {
        shown.resize(MostShown);
        shown += "...";
    }
    error = kxString("expected ") + WantedName(result.GetKind()) + " but got \"" + shown + "\"";
    return false;
}

}  // namespace kxTclValue
