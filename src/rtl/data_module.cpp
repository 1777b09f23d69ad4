#include "quorda/rtl/data_module.h"

#include "quorda/rtl/filer.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/rtl/object_text.h"
#include "quorda/rtl/published.h"
#include "quorda/rtl/replace_file.h"

#include <cstring>
#include <memory>

namespace quorda {

namespace {

const bool kRegistered = [] {
    RegisterClass<TDataModule>("TDataModule", ComponentProperties());
    return true;
}();

bool StartsWithSignature(TStream& Stream) {
    const std::int64_t start = Stream.Position();
    char signature[4] = {};
    const std::int64_t count = Stream.Read(signature, 4);
    Stream.SetPosition(start);
    return count == 4 && std::string(signature, 4) == "TPF0";
}

} // namespace

void TDataModule::GetChildren(const std::function<void(TComponent*)>& Proc, TComponent* Root) {
    for (int i = 0; i < ComponentCount(); ++i) {
        Proc(Components(i));
    }
}

void TDataModule::LoadFromStream(TStream& Stream) {
    if (StartsWithSignature(Stream)) {
        TReader(Stream).ReadRootComponent(this);
        return;
    }
    TMemoryStream binary;
    ObjectTextToBinary(Stream, binary);
    binary.SetPosition(0);
    TReader(binary).ReadRootComponent(this);
}

void TDataModule::LoadFromFile(const std::string& FileName) {
    TFileStream file(FileName, fmOpenRead | fmShareDenyWrite);
    LoadFromStream(file);
}

void TDataModule::SaveToStream(TStream& Stream, TStreamFormat Format) {
    if (Format == TStreamFormat::Binary) {
        TWriter(Stream).WriteRootComponent(this);
        return;
    }
    TMemoryStream binary;
    TWriter(binary).WriteRootComponent(this);
    binary.SetPosition(0);
    ObjectBinaryToText(binary, Stream);
}

void TDataModule::SaveToFile(const std::string& FileName, TStreamFormat Format) {
    TMemoryStream data;
    SaveToStream(data, Format);
    try {
        ReplaceFile(FileName, [&](const std::string& TempName) {
            TFileStream file(TempName, fmCreate);
            file.WriteBuffer(data.Memory(), data.Size());
        });
    } catch (const EInOutError& e) {
        // A stream's file that cannot be put in place is the stream's create error.
        throw EFCreateError(FormatMessage(SFCreateError, FileName, std::strerror(e.ErrorCode())));
    }
}

std::unique_ptr<TDataModule> TDataModule::CreateFromStream(TStream& Stream) {
    auto module = std::make_unique<TDataModule>();
    module->LoadFromStream(Stream);
    return module;
}

std::unique_ptr<TDataModule> TDataModule::CreateFromFile(const std::string& FileName) {
    auto module = std::make_unique<TDataModule>();
    module->LoadFromFile(FileName);
    return module;
}

} // namespace quorda
