#include "quorda/db/field.h"
#include "quorda/rtl/in_out_error.h"
#include "quorda/tools/text_transfer.h"
#include "text_file_p.h"

#include <cerrno>

namespace quorda {

TLineWriter::TLineWriter(const std::string& FileName, bool Append) : FFileName(FileName) {
    FFile = std::fopen(FileName.c_str(), Append ? "ab" : "wb");
    if (FFile == nullptr) {
        RaiseInOutError("Cannot write file", FFileName, errno);
    }
    // An export writes tens of megabytes: a large buffer makes that a few hundred writes to the
    // system instead of thousands. Without it the file still works with stdio's own buffer.
    FBuffer = std::make_unique<char[]>(kBufferSize);
    std::setvbuf(FFile, FBuffer.get(), _IOFBF, kBufferSize);
}

TLineWriter::~TLineWriter() {
    if (FFile != nullptr) {
        std::fclose(FFile);
    }
}

void TLineWriter::Fail(const char* Action, int ErrorCode) {
    if (FFile != nullptr) {
        std::fclose(FFile);
        FFile = nullptr;
    }
    RaiseInOutError(Action, FFileName, ErrorCode);
}

void TLineWriter::WriteLine(const std::string& Line) {
    if (fwrite_unlocked(Line.data(), 1, Line.size(), FFile) != Line.size() ||
        fwrite_unlocked("\r\n", 1, 2, FFile) != 2) {
        Fail("Cannot write file", errno);
    }
}

void TLineWriter::Close() {
    std::FILE* file = FFile;
    FFile = nullptr;
    if (std::fclose(file) != 0) {
        RaiseInOutError("Cannot write file", FFileName, errno);
    }
}

TLineReader::TLineReader(const std::string& FileName) : FFileName(FileName) {
    FFile = std::fopen(FileName.c_str(), "rb");
    if (FFile == nullptr) {
        RaiseInOutError("Cannot open file", FFileName, errno);
    }
}

TLineReader::~TLineReader() {
    std::fclose(FFile);
}

bool TLineReader::ReadLine(std::string& Line) {
    Line.clear();
    int c = 0;
    while ((c = getc_unlocked(FFile)) != EOF && c != '\n') {
        Line += static_cast<char>(c);
    }
    if (c == EOF) {
        if (std::ferror(FFile)) {
            RaiseInOutError("Cannot read file", FFileName, errno);
        }
        if (Line.empty()) {
            return false;
        }
    }
    if (!Line.empty() && Line.back() == '\r') {
        Line.pop_back();
    }
    return true;
}

bool IsBareType(TFieldType DataType) {
    return DataType == ftSmallint || DataType == ftInteger || DataType == ftFloat || DataType == ftLargeint;
}

void AppendFieldValue(std::string& Line, const TField& Field) {
    if (IsBareType(Field.DataType())) {
        AppendEncoded(Line, Field.AsString());
    } else {
        Line += '\'';
        AppendEncoded(Line, Field.AsString());
        Line += '\'';
    }
}

} // namespace quorda
