#include "StatusMessages.h"

namespace {
StatusMessageSink& sink()
{
    static StatusMessageSink value;
    return value;
}
} // namespace

void setStatusMessageSink(StatusMessageSink newSink)
{
    sink() = std::move(newSink);
}

bool hasStatusMessageSink()
{
    return bool(sink());
}

void showStatusMessage(const QString& text, int timeoutMs)
{
    if (sink())
        sink()(text, timeoutMs);
}
