#pragma once

#include "quorda/export.h"

#include <functional>

namespace quorda {

// Root of every class that can be the sender of an event.
class QUORDA_API TObject {
public:
    TObject() = default;
    TObject(const TObject&) = delete;
    TObject& operator=(const TObject&) = delete;
    virtual ~TObject() = default;
};

// The classic notify event: assigned means non-empty.
using TNotifyEvent = std::function<void(TObject* Sender)>;

} // namespace quorda
