// The examples of the headers of errors, messages and counted objects.

#include <iostream>

#include <qvxsys/qvxsys.h>

namespace {

bool Codes()
{
    QuorvexError const error = QuorvexError::MakeError(0x10000042, u"HostError_NoSpace");
    return error.GetCode() != 0 && error.GetCodeName() == u"HostError_NoSpace";
}

void Parse(TStringCore const& name)
{
    TScanStringCore(name).skip(u"valid").end();
}

void Load(TStringCore const& name)
{
    try {
        Parse(name);
    } catch (...) {
        StackExceptionAndRethrow(TFormatStringCore(u"while loading \"%1\"").arg(name));
    }
}

bool Exceptions()
{
    try {
        Load(u"settings");
    } catch (QuorvexException const& e) {
        TError::ErrorInfo const& info = e.GetErrorInfo();
        return e.CollateMessagesForLog() == u"TScanStringCore::skip: String mismatch.\nwhile loading \"settings\"\n" &&
               info.error.GetCodeName() == u"QuorvexException_AutoGen_0x9DAC629F" &&
               info.source == TError::SourceLibrary && info.inner == nullptr;
    }
    return false;
}

bool Origins()
{
    auto const before = TError::SetOriginHook(TError::RecordTrace);
    bool known = false;
    try {
        Load(u"settings");
    } catch (QuorvexException const& e) {
        if (TError::ErrorOrigin const* const origin = TError::GetOrigin(e.GetErrorInfo())) {
            std::cout << origin->location.file << ':' << origin->location.line << '\n';
            for (int i = 0; i < origin->frameCount; ++i) {
                std::cout << "  " << origin->frames[i] << '\n'; // return addresses, for a symbolizer
            }
            known = origin->location.line > 0 && origin->frameCount > 0;
        }
    }
    TError::SetOriginHook(before);
    return known;
}

bool Messages()
{
    TStringCore const text = TFormatStringCore(u"%1 of %2 files copied (%3 %%)").arg(7).arg(20).arg(35.0, 0, 'f', 1);
    TStringCore const name = u"notes";
    TStringCore const literal = qvxsys::Format(u"%1 of %2: %3", 3, 10, name);
    return text == u"7 of 20 files copied (35.0 %)" && literal == u"3 of 10: notes";
}

bool Scanning()
{
    TStringCore const line = u"  width: 12.5 mm\n";
    TStringCore key, unit;
    double value = 0;
    TScanStringCore scan(line);
    scan.skipWhitespace().readAnyNotOf(key, u":").skip(u":").skipWhitespace();
    scan.readFloat(value).skipWhitespace().readNonWhitespace(unit).skipNewline().end();
    return key == u"width" && value == 12.5 && unit == u"mm";
}

void Check(int timeout)
{
    if (timeout < 0) {
        ThrowLogicException(__FILE__, __LINE__, "timeout >= 0");
    }
}

bool Checks()
{
    InjectLookupTStr([](unsigned int id) { return qvxsys::Format(u"Something went wrong (%1).", id); });
    LogicException::SetLogicExceptionMessageId(4711);
    try {
        Check(-1);
    } catch (LogicException const& e) {
        return e.GetMessagesFront() == u"Something went wrong (4711)." &&
               e.GetInternalMessage().toStdString().ends_with(": timeout >= 0");
    }
    return false;
}

class Session : public RefCntObject
{
public:
    int requests = 0;

protected:
    ~Session() override = default; // the last RefCntPtr deletes it
};

bool Counting()
{
    RefCntPtr<Session> session = MakeRefCnt<Session>();
    RefCntPtr<Session> const other = session; // two references
    other->requests += 1;
    session.reset(); // one
    return other.use_count() == 1 && other->requests == 1;
}

} // namespace

int main()
{
    bool const ok = Codes() && Exceptions() && Origins() && Messages() && Scanning() && Checks() && Counting();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
