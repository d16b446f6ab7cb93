#include "hosts/command/metadata/Exiv2Session.h"

#include <exiv2/error.hpp>
#include <exiv2/properties.hpp>
#include <exiv2/xmp_exiv2.hpp>

namespace velorn {
namespace {

std::mutex& exiv2Mutex() {
    static std::mutex mutex;
    return mutex;
}

bool prepare() {
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    Exiv2::XmpParser::initialize();
    Exiv2::XmpProperties::registerNs("http://ns.adobe.com/xmp/note/", "xmpNote");
    return true;
}

} // namespace

Exiv2Session::Exiv2Session() : m_lock(exiv2Mutex()) {
    static const bool isPrepared = prepare();
    static_cast<void>(isPrepared);
}

} // namespace velorn
