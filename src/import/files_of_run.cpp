#include "import/files_of_run.h"

#include "import/text_export.h"
#include "log/runtime_error.h"
#include "platform/paths.h"

#include <algorithm>
#include <string_view>

namespace velmora {

namespace {

bool MayBeTextFile(const std::string& path)
{
    const std::string_view name = NamePart(path);
    if (name.size() < kTextFileExtension.size())
        return false;
    const std::string_view end = name.substr(name.size() - kTextFileExtension.size());
    return std::equal(end.begin(), end.end(), kTextFileExtension.begin(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

} // namespace

FilesOfRun::FilesOfRun(const ConversionSettings& settings, const std::vector<std::string>& sources)
{
    std::ranges::copy_if(sources, std::back_inserter(files_), MayBeTextFile);
    for (const std::string* named :
         {&settings.protocolFile, &settings.mappingFile, &settings.targetFile, &settings.summaryFile})
        if (MayBeTextFile(*named))
            files_.push_back(*named);
}

void FilesOfRun::Refuse(const std::string& path)
{
    if (harmless_.contains(path))
        return;
    for (const std::string& file : files_)
        if (IsSameFile(path, file))
            throw RuntimeError(runtime_errors::kFileAlreadyOpen,
                               "The text file [" + path +
                                   "] is also a file that this run reads or writes; txt= names another folder");
    harmless_.insert(path);
}

} // namespace velmora
