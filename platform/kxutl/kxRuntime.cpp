#include <kxutl/kxRuntime.h>

const kxRuntime& kxRuntime::GetInstance() noexcept {
    static const kxRuntime instance;
    return instance;
}

char kxRuntime::GetPathSeparator() const noexcept {
    return '/';
}
