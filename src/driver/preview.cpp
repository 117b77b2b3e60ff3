#include "driver/preview.h"

#include "log/procedure.h"
#include "platform/file_changes.h"
#include "platform/paths.h"
#include "schema/database_session.h"

namespace velmora {

void DescribeDatabase(Job& job, DatabaseSession& session, Preview& preview)
{
    try {
        session.TakeBack();
        session.OpenReadOnly(PathFromUtf8(NativePath(job.settings.targetFile)));
        preview.contents = session.Contents();
        preview.sizeBytes = session.SizeBytes();
        preview.maxSizeBytes = session.MaxSizeBytes();
    } catch (const RuntimeError& error) {
        job.log.ErrorReport("DescribeDatabase", "DescribeDatabase: " + job.settings.targetFile, error);
    }
}

void CheckProtocolFile(const ConversionSettings& settings)
{
    if (settings.protocolFile.empty())
        return;
    const std::string path = NativePath(settings.protocolFile);
    if (const std::error_code error = WhyNotAppend(path))
        throw FileError("The protocol file", path, "cannot be written", error.value());
}

} // namespace velmora
