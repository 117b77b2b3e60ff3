// Loads arbitrary bytes as an XML file, with little memory so that the mapped file is used as well, walks the document
// once through its whole interface, and analyses and plans it.
#include "input_file.h"
#include "mapping/tag_map.h"
#include "plan/analyse_xml.h"
#include "settings/job.h"
#include "support/scripted_host.h"
#include "xml/document_loader.h"

#include <algorithm>
#include <cstdint>
#include <map>

namespace {

using namespace velmora::fuzzing;

void CheckDocument(const velmora::Document& document)
{
    std::size_t children = 0;
    std::uint64_t values = 0;
    std::map<velmora::PathId, std::uint32_t> mostChildren;
    std::map<velmora::PathId, std::uint32_t> mostTwins;
    for (velmora::ElementId element = 0; element < document.ElementCount(); ++element) {
        std::uint32_t counted = 0;
        std::map<velmora::PathId, std::uint32_t> ofTag;
        const auto forEachChild = [&](const auto& visit) {
            for (velmora::ElementId child = document.FirstChild(element); child != velmora::kNoElement;
                 child = document.NextSibling(child))
                visit(child);
        };
        forEachChild([&](velmora::ElementId child) {
            Check(document.Paths().Parent(document.Path(child)) == document.Path(element));
            ++ofTag[document.Path(child)];
            ++counted;
        });
        forEachChild([&](velmora::ElementId child) {
            const velmora::PathId path = document.Path(child);
            Check(document.IsRepeated(child) == (ofTag[path] > 1));
            if (!document.HasChildren(child))
                mostTwins[path] = std::max(mostTwins[path], ofTag[path] - 1);
        });
        std::uint32_t& most = mostChildren[document.Path(element)];
        most = std::max(most, counted);
        children += counted;
        values += velmora::HasText(document.Content(element)) ? 1 : 0;
        for (std::uint32_t i = 0; i < document.AttributeCount(element); ++i) {
            Check(!document.NameText(document.AttributeName(element, i)).empty());
            values += document.AttributeValue(element, i).empty() ? 0 : 1;
        }
        Check(document.PathText(document.Path(element), 40).size() <= 40);
    }
    Check(document.IsEmpty() || children + 1 == document.ElementCount());
    Check(values == document.ValueCount());
    for (const auto& [path, most] : mostChildren)
        Check(document.MostChildren(path) == most);
    for (const auto& [path, most] : mostTwins)
        Check(document.MostTwins(path) == most);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    WriteInput(data, size);

    constexpr std::size_t kMemoryBudgetBytes = 128 * 1024; // two of the four arrays go to a file
    velmora::LoadResult loaded = velmora::LoadDocument(
        InputPath(), [](std::int64_t) {}, velmora::MemoryBudget(kMemoryBudgetBytes));
    Check(loaded.document.IsEmpty() == !loaded.problem.empty());
    CheckDocument(loaded.document);

    velmora::testing::ScriptedHost host;
    velmora::Job job(host);
    job.settings.blImportAttributes = true;
    velmora::StructureModel model;
    velmora::MappingPlan plan;
    velmora::velAnalyseXML(job, loaded.document, velmora::TagMap(), model, plan);
    Check(model.UpperBound() + 1 >= loaded.document.Paths().Size() || loaded.document.IsEmpty());
    return 0;
}
