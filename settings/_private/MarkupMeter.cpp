#include "settings/_private/MarkupMeter.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kxct {

namespace {

constexpr std::uint64_t fnvOffset = 14695981039346656037U;
constexpr std::uint64_t fnvPrime = 1099511628211U;

bool IsBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

}  // namespace

std::size_t MarkupMeter::Accept(const char* data, std::size_t size) {
    std::size_t position = 0;
    while (position < size && !_exceeded) {
        const std::size_t plain = SkipPlainText(data + position, size - position);
        if (plain > 0) {
            position += plain;
            _previous = data[position - 1];
        }
        if (position < size) {
            Step(data[position]);
            _previous = data[position];
            ++position;
        }
    }
    if (!_exceeded) {
        return size;
    }
    return position == 0 ? 0 : position - 1;
}

// How far the state is sure to stay as it is, in the states in which documents spend their
// megabytes.
std::size_t MarkupMeter::SkipPlainText(const char* data, std::size_t size) const {
    if (_state == State::TagName) {
        const char* end =
            std::find_if(data, data + size, [](char each) { return IsBlank(each) || each == '>'; });
        return static_cast<std::size_t>(end - data);
    }
    char next = 0;
    if (_state == State::Text) {
        next = '<';
    } else if (_state == State::QuotedValue) {
        next = _quote;
    } else if (_state == State::Instruction) {
        next = '?';
    } else if (_state == State::Comment && _run == 0) {
        next = '-';
    } else if (_state == State::CData && _run == 0) {
        next = ']';
    } else {
        return 0;
    }
    const void* found = std::memchr(data, next, size);
    return found == nullptr ? size
                            : static_cast<std::size_t>(static_cast<const char*>(found) - data);
}

void MarkupMeter::Step(char character) {
    switch (_state) {
        case State::Text:
            _state = State::TagOpened;
            break;
        case State::TagOpened:
            OpenTag(character);
            break;
        case State::EndTag:
            if (character == '>') {
                if (!_openElements.empty()) {
                    _inForce -= _openElements.back();
                    _openElements.pop_back();
                }
                _state = State::Text;
            }
            break;
        case State::TagName:
        case State::BetweenAttributes:
        case State::AttributeName:
        case State::BeforeValue:
        case State::QuotedValue:
        case State::BareValue:
            StepInTag(character);
            break;
        default:
            StepInDeclaration(character);
            break;
    }
}

void MarkupMeter::OpenTag(char character) {
    _nesting = 1;
    _run = 0;
    if (character == '/') {
        _state = State::EndTag;
    } else if (character == '!') {
        _state = State::Declaration;
    } else if (character == '?') {
        _state = State::Instruction;
    } else if (character == '%') {
        _state = State::SkippedMarkup;
    } else if (!IsBlank(character)) {
        _declaredHere = 0;
        _state = State::TagName;
    }
}

void MarkupMeter::StepInTag(char character) {
    if (_state == State::QuotedValue) {
        _state = State::BetweenAttributes;
        return;
    }
    if (character == '>') {
        if (_state == State::AttributeName) {
            EndName();
        }
        CloseTag();
        return;
    }
    switch (_state) {
        case State::TagName:
        case State::BareValue:
            if (IsBlank(character)) {
                _state = State::BetweenAttributes;
            }
            break;
        case State::BetweenAttributes:
            if (character == '=') {
                _state = State::BeforeValue;
            } else if (!IsBlank(character) && character != '/') {
                BeginName(character);
            }
            break;
        case State::AttributeName:
            if (character == '=') {
                EndName();
                _state = State::BeforeValue;
            } else if (IsBlank(character)) {
                EndName();
                _state = State::BetweenAttributes;
            } else {
                ContinueName(character);
            }
            break;
        default:
            if (character == '"' || character == '\'') {
                _quote = character;
                _state = State::QuotedValue;
            } else if (!IsBlank(character)) {
                _state = State::BareValue;
            }
            break;
    }
}

void MarkupMeter::CloseTag() {
    if (_previous == '/') {
        _inForce -= _declaredHere;
    } else {
        _openElements.push_back(_declaredHere);
    }
    _state = State::Text;
}

void MarkupMeter::StepInDeclaration(char character) {
    switch (_state) {
        case State::Declaration:
            _state = character == '['   ? State::CDataOpened
                     : character == '-' ? State::CommentOpened
                                        : State::SkippedMarkup;
            if (_state == State::SkippedMarkup) {
                SkipMarkup(character);
            }
            break;
        case State::CommentOpened:
            _state = character == '-' ? State::Comment : State::SkippedMarkup;
            if (_state == State::SkippedMarkup) {
                SkipMarkup(character);
            }
            break;
        case State::Comment:
            _run = character == '-' ? _run + 1 : 0;
            if (_run == 2) {
                _state = State::SkippedMarkup;
            }
            break;
        case State::CDataOpened:
            if (character == '[') {
                _state = State::CData;
            }
            break;
        case State::CData:
            if (character == '>' && _run >= 2) {
                _state = State::Text;
            }
            _run = character == ']' ? _run + 1 : 0;
            break;
        case State::Instruction:
            if (character == '?') {
                _state = State::SkippedMarkup;
            }
            break;
        default:
            SkipMarkup(character);
            break;
    }
}

void MarkupMeter::SkipMarkup(char character) {
    if (character == '<') {
        ++_nesting;
    } else if (character == '>' && --_nesting == 0) {
        _state = State::Text;
    }
}

void MarkupMeter::BeginName(char character) {
    _state = State::AttributeName;
    _nameHash = fnvOffset;
    _nameLength = 0;
    _beginsXmlns = true;
    ContinueName(character);
}

void MarkupMeter::ContinueName(char character) {
    constexpr std::string_view xmlns = "xmlns";
    if (_nameLength < xmlns.size() && character != xmlns[_nameLength]) {
        _beginsXmlns = false;
    }
    ++_nameLength;
    _nameHash = (_nameHash ^ static_cast<unsigned char>(character)) * fnvPrime;
}

void MarkupMeter::EndName() {
    _names.insert(_nameHash);
    if (_beginsXmlns && _nameLength >= 5) {
        ++_declaredHere;
        ++_inForce;
    }
    _exceeded = _names.size() > maxAttributeNames || _inForce > maxNamespacesInForce;
}

}  // namespace kxct
