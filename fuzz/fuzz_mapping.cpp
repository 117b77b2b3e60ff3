// Loads arbitrary bytes as a mapping file, looks its tags up, saves what was read and loads it again.
#include "input_file.h"
#include "mapping/tag_map.h"
#include "settings/job.h"
#include "support/scripted_host.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velmora;
    using namespace velmora::fuzzing;

    WriteInput(data, size);
    testing::ScriptedHost host;
    Job job(host);
    job.settings.blQuiet = true;
    TagMap map;
    static_cast<void>(velLoadTagMapping(job, map, InputPath()));
    job.settings.blAbort = false; // which an empty line has set
    for (std::size_t number = 1; number <= map.UpperBound(); ++number)
        Check(!map.Lookup(map.Entry(number).tag).empty() || map.Entry(number).tag.empty());
    if (!PrepareSaving(job, map))
        return 0;
    Check(SaveTagMapping(job, map, InputPath()));
    TagMap again;
    Check(velLoadTagMapping(job, again, InputPath()));
    Check(again.UpperBound() == map.UpperBound());
    return 0;
}
