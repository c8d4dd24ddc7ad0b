#include "extension/Configuration.h"

#include "common/XML.h"
#include "common/XMLElement.h"

Common::string Configuration::fileFor(const Common::istring& hostPath)
{
    const Common::string path = Common::Replace(Common::string(hostPath), "\\", "/");
    const Common::istring folded(path);
    // Everything up to and including the last "/".
    unsigned slash = path.rfind('/');
    Common::string folder =
        slash == Common::string::npos ? Common::string() : path.substr(0, slash + 1);
    if (folded.find("iexplore") != Common::istring::npos)
        return folder + "TIDEWELL.XML";
    if (folded.find("firefox") != Common::istring::npos)
        return folder + "components/zrmedia/TIDEWELL.XML";
    return Common::string();
}

Configuration::Values Configuration::parse(const Common::string& text)
{
    Values values;
    Common::shared_ptr<Common::XML::Element> root(new Common::XML::Element(Common::string("null")));
    Common::XML::Parser().XML(text, root);
    const char* const tags[] = {"ExtensionModule", "WorkingDir", "UrlBase"};
    Common::string* const targets[] = {&values.extensionModule, &values.workingFolder,
                                       &values.contentFolder};
    for (unsigned i = 0; i < 3; ++i)
    {
        const Common::string tag(tags[i]);
        if (!root->hasElement(tag))
            continue;
        Common::shared_ptr<Common::XML::Element> element = root->getElement(tag);
        if (element->hasAttribute(Common::string("value")))
            *targets[i] = element->attribute(Common::string("value"));
        *targets[i] = Common::Replace(*targets[i], "\\", "/");
    }
    return values;
}
