#pragma once

#include "quorda/rtl/component.h"

#include <memory>
#include <string>

namespace quorda {

class TStream;

// How a component tree is saved: the binary stream, or its readable text form for review and diffs.
enum class TStreamFormat { Binary, Text };

// A container of non-visual components (a database, its queries, entities) saved and loaded as one
// set. Loading creates the components by registered class name, sets their properties, links
// references between them and calls their Loaded, so a database marked connected connects and an
// active query opens with no code beyond the load call.
class QUORDA_API TDataModule : public TComponent {
public:
    explicit TDataModule(TComponent* AOwner = nullptr) : TComponent(AOwner) {}

    std::string ClassName() const override { return "TDataModule"; }

    // Reads a module saved in either form (told apart by the binary signature). The components read
    // join those the module has; on any error every component read so far is freed, the module
    // keeps its name, and the error (EReadError with offset and expectation for damaged input) passes
    // on.
    void LoadFromStream(TStream& Stream);
    void LoadFromFile(const std::string& FileName);
    void SaveToStream(TStream& Stream, TStreamFormat Format = TStreamFormat::Binary);
    // Writes the whole file under a temporary name first, so a failed save leaves the old file as it
    // was.
    void SaveToFile(const std::string& FileName, TStreamFormat Format = TStreamFormat::Binary);

    // A module of its own (no owner) loaded from the stream or file.
    static std::unique_ptr<TDataModule> CreateFromStream(TStream& Stream);
    static std::unique_ptr<TDataModule> CreateFromFile(const std::string& FileName);

    // Every owned component, in order.
    void GetChildren(const std::function<void(TComponent*)>& Proc, TComponent* Root) override;
};

} // namespace quorda
