#include "ui/conversion.h"

#include <utility>

namespace velmora {

Conversion::Conversion(Application& application, WindowHost& host, QObject* parent)
    : QObject(parent), application_(application), host_(host)
{
    host_.SetCancel([this] { application_.Cancel(); });
}

Conversion::~Conversion()
{
    if (!thread_.joinable())
        return;
    host_.RequestCancel();
    thread_.join();
}

void Conversion::Start()
{
    host_.Reset();
    clock_.start();
    thread_ = std::thread([this] {
        outcome_ = application_.Convert();
        QMetaObject::invokeMethod(this, &Conversion::End, Qt::QueuedConnection);
    });
}

void Conversion::End()
{
    thread_.join();
    emit Finished();
}

} // namespace velmora
