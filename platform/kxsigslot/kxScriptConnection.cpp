#include <kxsigslot/kxScriptConnection.h>

kxScriptTarget::~kxScriptTarget() = default;
