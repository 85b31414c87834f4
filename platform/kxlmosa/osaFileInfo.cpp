#include <kxlmosa/osaFileInfo.h>

osaFileInfo::osaFileInfo(const kxString& path)
    : _path(path), _name(path.rfind('/') + 1), _dot(path.size()) {
    const std::size_t dot = _path.rfind('.');
    const std::size_t firstOther = _path.find_first_not_of('.', _name);
    if (dot != kxString::npos && firstOther != kxString::npos && dot > firstOther) {
        _dot = dot;
    }
}

kxString osaFileInfo::GetPath() const {
    if (_name == 0) {
        return ".";
    }
    // Repeated separators are one: "/data//x" lies in "/data".
    const std::size_t end = _path.find_last_not_of('/', _name - 1);
    return end == kxString::npos ? kxString("/") : kxString(_path.substr(0, end + 1));
}

kxString osaFileInfo::GetBaseName() const {
    return _path.substr(_name, _dot - _name);
}

kxString osaFileInfo::GetFileExtension() const {
    return _dot < _path.size() ? kxString(_path.substr(_dot + 1)) : kxString();
}
