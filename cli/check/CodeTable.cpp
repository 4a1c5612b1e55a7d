#include <cstddef>

#include "cli/check/DiagnosticCodes.h"

namespace {

// clang-format off
constexpr SCodeRow CODES[] = {
    {ECode::UNREADABLE, "DLP001", ESeverity::ERROR, "unreadable",
     "the file cannot be read: {}",
     "check its path and its permissions",
     "Nothing can be said about a file that is missing, is a directory without any .xml file below it or "
     "may not be read. It cannot be allowed.",
     "(a path at which there is no file)",
     "(a path at which there is one)"},
    {ECode::NOT_UTF8, "DLP002", ESeverity::ERROR, "not-utf8",
     "the file is not UTF-8{}",
     "save it as UTF-8{}",
     "A policy is UTF-8, whatever its declaration says; anything else is refused as a whole. Where the "
     "declaration names another encoding, it is named: most often that is what the file is in. It cannot be allowed.",
     R"((name="M\xFCller", saved in an encoding of one byte per character))",
     "(the same, saved as UTF-8)"},
    {ECode::NOT_XML, "DLP003", ESeverity::ERROR, "not-xml",
     "the file is no XML: {}",
     "{}",
     "A policy is well-formed XML without a DOCTYPE, and its elements are nested at most 256 deep; "
     "anything else is refused as a whole. Most often a & or a < stands for itself, which is written &amp; or "
     "&lt;, or an element is not closed. It cannot be allowed.",
     "<SAPolicy><digitalAssets></SAPolicy>",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::WRONG_ROOT, "DLP004", ESeverity::ERROR, "wrong-root",
     "no policy: the root element is {}, not {}",
     "check that this is the file you meant",
     "Names of elements are case-sensitive, so <sapolicy> is no policy either.",
     R"(<Policy template_version="3.0.1000"/>)",
     R"(<SAPolicy template_version="3.0.1000" localization_language="">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::WRONG_LANGUAGE, "DLP005", ESeverity::ERROR, "wrong-language",
     "the language of the document is {}, and {}",
     "write --language {}, or remove localization_language if the texts are in no particular language",
     "An import takes nothing of a document whose language is another than the one that is set. A "
     "document without a language is taken everywhere.",
     R"(<SAPolicy template_version="3.0.1000" localization_language="English">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000" localization_language="">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::NO_TEMPLATES, "DLP006", ESeverity::ERROR, "no-templates",
     "an import takes nothing of the document: {}",
     "add a template; a document of assets alone is checked with --assets and taken by dlpctl assets "
     "import",
     "dlpctl import needs a template at least, for it is templates that make a policy.",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates/>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::OLDER_LAYOUT, "DLP007", ESeverity::NOTE, "older-layout",
     "template_version is missing or empty, so the document is read as one of the older layout{}",
     "add template_version=\"3.0.1000\"{}",
     "A document of the older layout is rewritten on its way in: displayName becomes display_name, names "
     "of assets are looked up in the name map, and only templates are taken. It is a warning when there is "
     "what only the present layout has, display_name or digitalAssets. It is an error when there is nothing "
     "of the older layout either, no displayName and no builtin: the version was forgotten, and an import "
     "takes nothing. The rest is then checked as if the version were there; with --allow DLP007 it is checked "
     "as what it is read as. --fix leaves it as it is: with the version an import takes what it passed over.",
     R"(<SAPolicy>
  <complianceTemplates>
    <template name="cards" displayName="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy template_version="2">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::OLDER_SECTION, "DLP008", ESeverity::ERROR, "older-section",
     "the section {} of a document of the older layout is not taken",
     "move it into a document of the present layout, whose root has a template_version",
     "The older layout holds templates alone. Assets, industries and regions of such a document are "
     "dropped.",
     R"(<SAPolicy>
  <industries><industry name="banking"><template_id>cards</template_id></industry></industries>
  <complianceTemplates>
    <template name="cards" displayName="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy>
  <industries/>
  <complianceTemplates>
    <template name="cards" displayName="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::OLDER_BUILT_IN, "DLP009", ESeverity::ERROR, "older-built-in",
     "the template {} is not taken: it is a built-in one of the older layout",
     "set builtin=\"0\" to import it as one of your own",
     "Built-in templates come with the system, so documents of the older layout do not bring them.",
     R"(<SAPolicy>
  <complianceTemplates>
    <template name="cards" displayName="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
    <template name="all" displayName="All" builtin="1">
      <matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy>
  <complianceTemplates>
    <template name="cards" displayName="Cards" builtin="0">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::OLDER_NAME_LOST, "DLP010", ESeverity::WARNING, "older-name-lost",
     "display_name is lost: displayName is what is read in the older layout",
     "write it as displayName",
     "When a document of the older layout is rewritten, the value of displayName takes the place of that "
     "of display_name, even when the former is empty.",
     R"(<SAPolicy>
  <complianceTemplates>
    <template name="cards" displayName="Cards" display_name="Payment cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy>
  <complianceTemplates>
    <template name="cards" displayName="Cards" description="Payment cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::UNKNOWN_ELEMENT, "DLP011", ESeverity::WARNING, "unknown-element",
     "{} is no element of a policy",
     "{}",
     "A building block has no child elements: what stands in one is passed over. In a keyword or another text "
     "an element is not seen: its text is read as a part of the whole. Where elements are read, an unknown one is "
     "lost, DLP018.",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"><note>words of ours</note></buildingBlock>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"><!-- words of ours --></buildingBlock>
  </matchRule>
</template>)"},
    {ECode::MISPLACED_ELEMENT, "DLP012", ESeverity::WARNING, "misplaced-element",
     "{} is not read here, in {}",
     "move it to where it belongs, or remove it",
     "Every element has its place: entity and dictionary in digitalAssets, keyword in dictionary, "
     "template in complianceTemplates, and so on. Elsewhere it is passed over, which is warned of "
     "alone when the item around it is taken, as with a buildingBlock in a buildingBlock. An expression of type "
     "Generic has no alphabetCharset: its text is dropped.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset>0123456789</alphabetCharset>
</entity>)",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="8" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset>0123456789</alphabetCharset>
</entity>)"},
    {ECode::UNKNOWN_ATTRIBUTE, "DLP013", ESeverity::WARNING, "unknown-attribute",
     "{} is no attribute of {}",
     "{}",
     "An import passes over attributes that it does not know, and takes those that they were meant for "
     "as absent.",
     R"(<entity name="account" type="Generic" display-name="" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" description="" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)"},
    {ECode::MISPLACED_ATTRIBUTE, "DLP014", ESeverity::WARNING, "misplaced-attribute",
     "{} is not read here: {}",
     "remove it, or correct what it depends on",
     "Lengths belong to expressions of Type 1 and Type 2, radii to those of Type 3, threshold to lists "
     "of type Threshold, number to those of type Distance, entityHits to expressions. Elsewhere they are "
     "taken as absent.",
     R"(<dictionary name="terms" type="Any" threshold="2" display_name="Terms">
  <keyword score="1">one</keyword>
  <keyword score="1">two</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Threshold" threshold="2" display_name="Terms">
  <keyword score="1">one</keyword>
  <keyword score="1">two</keyword>
</dictionary>)"},
    {ECode::STRAY_TEXT, "DLP015", ESeverity::WARNING, "stray-text",
     "text that nothing reads, in {}",
     "put it into the element or comment that it was meant for",
     "Only some elements have a text of their own: keyword, regularExpression, alphabetCharset, "
     "patternForDisplay, examples and template_id.",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
  two
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
  <!-- two -->
</dictionary>)"},
    {ECode::FOREIGN_RULE, "DLP016", ESeverity::WARNING, "foreign-rule",
     "{} is read as {}, whatever its name",
     "{}",
     "Every child element of a template is read as a rule and every child of a rule as a building block, "
     "but only matchRule and buildingBlock are checked on the way in. What else stands there is taken as "
     "it is read. Where it refers to what is not there, that is an error of its own, DLP030.",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
  <owner/>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
  <!-- <owner/> -->
</template>)"},
    {ECode::CHILD_TWICE, "DLP017", ESeverity::WARNING, "child-twice",
     "only the first {} of {} is read",
     "keep one of them",
     "Of several children of one name, an import reads the first. The others are lost; this is warned of alone, "
     "for the expression is taken.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <regularExpression>\d{9}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <examples>12345678</examples>
</entity>)"},
    {ECode::LOST_ELEMENT, "DLP018", ESeverity::ERROR, "lost-element",
     "no policy has {} in {}: an import passes it over with all that it holds",
     "{}",
     "Sections, assets, the parts of an expression, keywords, templates, industries, regions and their entries "
     "are found by the names of their elements, letter for letter. One that is spelt in another way, or stands "
     "in another place, is no item, and nothing of it is stored.",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
    <Template name="notes" display_name="Notes"/>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
    <!-- <Template name="notes" display_name="Notes"/> -->
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::ODD_VERSION, "DLP019", ESeverity::WARNING, "odd-version",
     "template_version is {}, which is no version number",
     "write 3.0.1000",
     "Any text marks the present layout, so an import takes it; it is then kept and written into what the "
     "same process exports.",
     R"(<SAPolicy template_version="new">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.1">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::NO_NAME, "DLP020", ESeverity::ERROR, "no-name",
     "the {} has no name",
     "give it one, by which others can refer to it",
     "An item without an internal name is passed over.",
     R"(<entity name="" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)",
     R"(<entity name="0" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)"},
    {ECode::NO_DISPLAY_NAME, "DLP021", ESeverity::ERROR, "no-display-name",
     "the {} {} has no {}",
     "give it one, for people",
     "An item without a name for people is passed over. It is display_name, and displayName in a document of "
     "the older layout.",
     R"(<template name="notes" display_name="">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
</template>)",
     R"(<template name="notes" display_name="-">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
</template>)"},
    {ECode::MISSING_CHILD, "DLP022", ESeverity::ERROR, "missing-child",
     "the {} {} has no child element {}",
     "add it",
     "Every expression has a regularExpression, and all but those of type Generic an alphabetCharset; "
     "without them they are skipped.",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="8" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="8" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset/>
</entity>)"},
    {ECode::BUILT_IN, "DLP023", ESeverity::ERROR, "built-in",
     "the stored {} {} is built in and this one is not",
     "give it another name, or set pre-defined=\"true\" to replace the built-in one",
     "A user's item never replaces a built-in one of the same name; it is skipped.",
     R"((pre-defined="false" on an item whose name the store has for a built-in one))",
     R"((pre-defined="true" on the same))"},
    {ECode::DUPLICATE_NAME, "DLP024", ESeverity::ERROR, "duplicate-name",
     "there are several {} named {}",
     "rename or remove one of them",
     "Of two items with one name the later one replaces the earlier one, without a word; of two "
     "templates both are skipped when one cannot be imported.",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>
<dictionary name="terms" type="Any" display_name="More terms">
  <keyword score="1">two</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>
<dictionary name="Terms" type="Any" display_name="More terms">
  <keyword score="1">two</keyword>
</dictionary>)"},
    {ECode::UNKNOWN_TYPE, "DLP025", ESeverity::WARNING, "unknown-type",
     "there is no type {}; it is read as {}",
     "{}",
     "The type is read in any case of letters. Any other text is taken as Generic for an expression and "
     "as All for a keyword list, and attributes that belong to another type are dropped; they are not told of. "
     "--fix leaves it as it is, for only its author knows which type is meant. Write Generic, Type 1, Type 2 or "
     "Type 3 for an expression, and All, Any, Threshold or Distance for a keyword list.",
     R"(<dictionary name="terms" type="Some" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)"},
    {ECode::UNCLEAR_FLAG, "DLP026", ESeverity::WARNING, "unclear-flag",
     "{} is {}, which is read as false",
     "write true or false",
     "A flag is true when it says true, in any case of letters; anything else, such as yes or 1, is "
     "false. --fix replaces words that say false anyway, such as no or 0, and leaves all others as they are.",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1" caseSensitive="yes">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1" caseSensitive="true">one</keyword>
</dictionary>)"},
    {ECode::UNCLEAR_NUMBER, "DLP027", ESeverity::WARNING, "unclear-number",
     "{} is {}, which is read as {}",
     "write a whole number of at most 32 bits",
     "Numbers are read as far as their digits go: 12abc is 12, and abc is 0. What is beyond 32 bits is "
     "taken as the largest or smallest number there is. --fix leaves it as it is, for only its author knows "
     "which number is meant.",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="12abc" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset>0123456789</alphabetCharset>
</entity>)",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="12" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset>0123456789</alphabetCharset>
</entity>)"},
    {ECode::MIN_ABOVE_MAX, "DLP028", ESeverity::WARNING, "min-above-max",
     "{} is {}, which is above {}, {}",
     "exchange or correct the two numbers",
     "No match can be as long as the one and as short as the other. A number that is absent is 0.",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="7" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset>0123456789</alphabetCharset>
</entity>)",
     R"(<entity name="account" type="Type 1" minLength="8" maxLength="8" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
  <alphabetCharset>0123456789</alphabetCharset>
</entity>)"},
    {ECode::UNKNOWN_VALIDATOR, "DLP029", ESeverity::WARNING, "unknown-validator",
     "there is no validator {}",
     "{}",
     "The validators that policies choose from stand in the predefined lists (dlpctl metadata). The name "
     "is kept as it is; whether the engine knows it is another matter.",
     R"(<entity name="account" type="Generic" validator="luhm" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" validator="luhn" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>)"},
    {ECode::UNKNOWN_ASSET, "DLP030", ESeverity::ERROR, "unknown-asset",
     "neither the document nor the store has the {} {}",
     "{}",
     "A template that refers to an asset which is not there is skipped. Names are compared exactly.",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="wrods"/></matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
</template>)"},
    {ECode::SOURCE_TYPE, "DLP031", ESeverity::ERROR, "source-type",
     "sourceType is {}; only ENTITY and KEYWORD are taken",
     "write one of the two, in capitals and without blanks",
     "The template is skipped: the type of what a block refers to must be spelled exactly.",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="Keyword" sourceName="words"/></matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
</template>)"},
    {ECode::OPERATION, "DLP032", ESeverity::ERROR, "operation",
     "the operation {} is not taken",
     "write AND or OR; what EXCEPT says must be said without it",
     "An import takes AND and OR, in any case of letters and with blanks around them. EXCEPT may stand "
     "in what an export writes, but a template that has it is skipped; what carries it from one store to "
     "another is dlpctl store dump and dlpctl store load.",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card" operation="&amp;"/>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card" operation=" and "/>
  </matchRule>
</template>)"},
    {ECode::UNKNOWN_TEMPLATE, "DLP033", ESeverity::ERROR, "unknown-template",
     "{} names the template {}, which is not in the document",
     "{}",
     "An import gives a template the categories of its own document. An entry for any other template is "
     "dropped. Blanks count.",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
  <industries>
    <industry name="banking"><template_id>card</template_id></industry>
  </industries>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
  <industries>
    <industry name="banking"><template_id>cards</template_id></industry>
  </industries>
</SAPolicy>)"},
    {ECode::UNKNOWN_CATEGORY, "DLP034", ESeverity::WARNING, "unknown-category",
     "the predefined lists have no {} {}",
     "{}",
     "The industries and regions that policies choose from stand in the predefined lists (dlpctl "
     "metadata). A category that they do not have is exported without its name for people.",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
  <industries>
    <industry name="Banking"><template_id>cards</template_id></industry>
  </industries>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
  <industries>
    <industry name="banking"><template_id>cards</template_id></industry>
  </industries>
</SAPolicy>)"},
    {ECode::UNUSED_ASSET, "DLP035", ESeverity::NOTE, "unused-asset",
     "no template refers to the {} {}",
     "use it in a template, or remove it",
     "Neither the document nor the store has a template that refers to it. That is no fault: templates "
     "may follow.",
     R"(<SAPolicy template_version="3.0.1000">
  <digitalAssets>
    <entity name="account" type="Generic" display_name="Account"><regularExpression>\d{8}</regularExpression></entity>
  </digitalAssets>
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000">
  <digitalAssets>
    <entity name="account" type="Generic" display_name="Account"><regularExpression>\d{8}</regularExpression></entity>
  </digitalAssets>
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="account"/></matchRule>
    </template>
  </complianceTemplates>
</SAPolicy>)"},
    {ECode::NAME_IN_TEXT, "DLP036", ESeverity::WARNING, "name-in-text",
     "the name {} does not survive in a rule that is edited as text",
     "use small letters, digits and hyphens",
     "Editing screens show a rule as one line, which is split wherever AND, OR or EXCEPT stands in "
     "capitals, within names too, and at parentheses. A template that is edited so would lose its "
     "reference.",
     R"(<dictionary name="BRANDS" type="Any" display_name="Brands">
  <keyword score="1">one</keyword>
</dictionary>)",
     R"(<dictionary name="brands" type="Any" display_name="Brands">
  <keyword score="1">one</keyword>
</dictionary>)"},
    {ECode::MISSING_OPERATION, "DLP037", ESeverity::WARNING, "missing-operation",
     "nothing says how this {} is joined to the one before it; it counts as AND",
     "write operation=\"AND\" or operation=\"OR\"",
     "All but the first need an operation. What is said here holds for this tool; an engine may see it "
     "differently.",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card"/>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card" operation="AND"/>
  </matchRule>
</template>)"},
    {ECode::FIRST_OPERATION, "DLP038", ESeverity::NOTE, "first-operation",
     "the operation of the first {} joins it to nothing",
     "remove it",
     "An operation joins a block or rule to the one before it. The first has none, so its operation is "
     "ignored.",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>
    <buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card" operation="AND"/>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words" operation=""/>
    <buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card" operation="AND"/>
  </matchRule>
</template>)"},
    {ECode::BLANK_IN_NAME, "DLP039", ESeverity::WARNING, "blank-in-name",
     "the {} {} begins or ends with a blank",
     "remove the blank",
     "Names are compared as they stand, blanks included, and nobody sees these. One of blanks alone is no "
     "name for people.",
     R"(<entity name="account" type="Generic" display_name="Account ">
  <regularExpression>\d{8}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account number">
  <regularExpression>\d{8}</regularExpression>
</entity>)"},
    {ECode::PATTERN_REFUSED, "DLP040", ESeverity::WARNING, "pattern-refused",
     "the pattern is refused by PCRE2: {}",
     "{}",
     "Patterns are kept and moved as they are, and which dialect the engine speaks is not known here, so "
     "this is a warning; with --strict it is an error. One that calls itself without end, such as (?R)?a, is told "
     "too: that shows when it is run. Correct it at the place that is told; one that calls itself is to match "
     "something first.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>(\d{8}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>(\d{8})</regularExpression>
</entity>)"},
    {ECode::PATTERN_BACKTRACKS, "DLP041", ESeverity::WARNING, "pattern-backtracks",
     "the pattern backtracks without bound: {} steps were not enough for {} characters",
     "make its parts exclude each other, or use possessive quantifiers and atomic groups",
     "The pattern was run on texts made from its own characters that almost match. Parts that can share "
     "the same characters in many ways, such as (a+)+, try them all before they give up. A text that "
     "somebody sends can then hold up the engine.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>(?:\d+-?)+x</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>(?:\d++-?)++x</regularExpression>
</entity>)"},
    {ECode::PATTERN_EMPTY, "DLP042", ESeverity::WARNING, "pattern-empty",
     "the pattern matches the empty string",
     "make something in it mandatory",
     "It is then found everywhere, or wherever its conditions hold, as those of (?=a) or \\b do, and what is "
     "found is nothing. The pattern was tried on a few short texts.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d*</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d+</regularExpression>
</entity>)"},
    {ECode::PATTERN_UNTRIED, "DLP043", ESeverity::WARNING, "pattern-untried",
     "from here on {} not tried for backtracking: the effort for one document is used up",
     "check them in documents of their own",
     "Patterns are tried until a bounded effort is used up, so that no document can hold up a check. It is "
     "enough for thousands of usual patterns, and for hundreds of slow ones. Patterns that are written "
     "alike are tried once.",
     "(hundreds of different patterns that each take long to fail, such as a\\w+\\w+x)",
     "(a few of them)"},
    {ECode::MISSING_NUMBER, "DLP044", ESeverity::WARNING, "missing-number",
     "{} is missing and read as 0",
     "write the number that is meant",
     "The numbers of a type stand in attributes of their own; an import makes 0 of each that is not there. "
     "A keyword without a score counts nothing.",
     R"(<dictionary name="terms" type="Threshold" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)"},
    {ECode::SENSELESS_NUMBER, "DLP045", ESeverity::WARNING, "senseless-number",
     "{} is {}, and only {} or more makes sense",
     "write the number that is meant",
     "It is stored as it is. What an engine makes of it is not known here: it may find everything, or "
     "nothing.",
     R"(<dictionary name="terms" type="Threshold" threshold="0" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Threshold" threshold="1" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)"},
    {ECode::OTHER_SPELLING, "DLP046", ESeverity::NOTE, "other-spelling",
     "{} is written {}, and read as {}",
     "write it as it is read",
     "Numbers may have blanks, a plus or zeros in front, flags and types may be in any case of letters. An "
     "export writes the plain form, so that the two differ.",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="+01" caseSensitive="true">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="10" caseSensitive="true">one</keyword>
</dictionary>)"},
    {ECode::SAME_PATTERN, "DLP047", ESeverity::NOTE, "same-pattern",
     "the expressions {} and {} find the same",
     "remove one of them, and let templates refer to the other one",
     "Pattern, type, numbers, case, validator and character set are equal. Whoever changes the one will "
     "not think of the other.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>
<entity name="customer" type="Generic" display_name="Customer">
  <regularExpression>\d{8}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>
<entity name="customer" type="Generic" validator="iban" display_name="Customer">
  <regularExpression>\d{8}</regularExpression>
</entity>)"},
    {ECode::LIST_EMPTY, "DLP050", ESeverity::WARNING, "list-empty",
     "the keyword list {} has no keyword",
     "add one, or remove the list",
     "A list without keywords matches nothing, or everything if it is of type All.",
     R"(<dictionary name="terms" type="Any" display_name="Terms"/>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)"},
    {ECode::KEYWORD_BLANK, "DLP051", ESeverity::WARNING, "keyword-blank",
     "the keyword is empty or only blanks",
     "remove it",
     "Keywords are not trimmed. One of blanks is found in every text.",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1"> </keyword>
  <keyword score="1">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1">a</keyword>
  <keyword score="1">one</keyword>
</dictionary>)"},
    {ECode::KEYWORD_TWICE, "DLP052", ESeverity::WARNING, "keyword-twice",
     "the list has the keyword {} twice",
     "remove one of them",
     "It would be counted twice, or make All and Distance need it twice. Two keywords are the same when "
     "they are equal, in any case of letters unless both are case-sensitive.",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1" caseSensitive="true">one</keyword>
  <keyword score="1" caseSensitive="false">One</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Any" display_name="Terms">
  <keyword score="1" caseSensitive="true">one</keyword>
  <keyword score="1" caseSensitive="true">One</keyword>
</dictionary>)"},
    {ECode::THRESHOLD_UNREACHABLE, "DLP053", ESeverity::WARNING, "threshold-unreachable",
     "the threshold is {}, and all keywords together come to {}",
     "lower the threshold, or add keywords",
     "Counted is what is more, the number of keywords or the sum of their scores. The list never "
     "matches.",
     R"(<dictionary name="terms" type="Threshold" threshold="4" display_name="Terms">
  <keyword score="2">one</keyword>
  <keyword score="1">two</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Threshold" threshold="3" display_name="Terms">
  <keyword score="2">one</keyword>
  <keyword score="1">two</keyword>
</dictionary>)"},
    {ECode::DISTANCE_OF_ONE, "DLP054", ESeverity::WARNING, "distance-of-one",
     "a list of type Distance has one keyword alone",
     "add the keyword that should be near it, or make it a list of type Any",
     "Distance asks how near keywords stand to each other. One alone is near nothing, so the list matches "
     "never, or wherever the keyword is; which of them depends on the engine.",
     R"(<dictionary name="terms" type="Distance" number="5" display_name="Terms">
  <keyword score="1">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Distance" number="5" display_name="Terms">
  <keyword score="1">one</keyword>
  <keyword score="1">two</keyword>
</dictionary>)"},
    {ECode::SCORES_ZERO, "DLP055", ESeverity::WARNING, "scores-zero",
     "every keyword of the list has a score of 0 or less",
     "give the keywords scores",
     "What a list of type Threshold compares with its threshold is made of the scores of the keywords that "
     "are found. Without any it is never reached, unless the engine counts keywords instead.",
     R"(<dictionary name="terms" type="Threshold" threshold="1" display_name="Terms">
  <keyword score="0">one</keyword>
</dictionary>)",
     R"(<dictionary name="terms" type="Threshold" threshold="1" display_name="Terms">
  <keyword score="0">one</keyword>
  <keyword score="1">two</keyword>
</dictionary>)"},
    {ECode::TEMPLATE_EMPTY, "DLP060", ESeverity::WARNING, "template-empty",
     "the {} has nothing to look for",
     "add a rule with a building block",
     "A template without rules, or a rule without blocks, matches nothing or everything; which of them "
     "depends on the engine.",
     R"(<template name="notes" display_name="Notes"/>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
</template>)"},
    {ECode::HITS_BELOW_ONE, "DLP061", ESeverity::WARNING, "hits-below-one",
     "{} hits of the expression are asked for",
     "write entityHits=\"1\" or more",
     "Without entityHits it is 0. Whether 0 hits are found everywhere or nowhere depends on the engine.",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="ENTITY" sourceName="card"/></matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card"/></matchRule>
</template>)"},
    {ECode::SAME_TEMPLATE, "DLP062", ESeverity::WARNING, "same-template",
     "the template {} matches the same as {}",
     "remove one of them, or correct what should differ",
     "The rules match alike, in the document or in the store, however they are written. Both would report "
     "each incident. Of templates with more than 16 conditions the rules are alike but for their order.",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="2" sourceName="card" operation="AND"/>
  </matchRule>
</template>
<template name="memos" display_name="Memos">
  <matchRule>
    <buildingBlock sourceType="ENTITY" entityHits="2" sourceName="card"/>
    <buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="2" sourceName="card" operation="AND"/>
  </matchRule>
</template>
<template name="memos" display_name="Memos">
  <matchRule>
    <buildingBlock sourceType="ENTITY" entityHits="3" sourceName="card"/>
    <buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>
  </matchRule>
</template>)"},
    {ECode::RULE_POINTLESS, "DLP063", ESeverity::WARNING, "rule-pointless",
     "the {} changes nothing: {}",
     "remove it, or correct what should differ",
     "Looked at are templates of up to 256 blocks whose rules, and the blocks of each rule, are joined "
     "by one operation alone, and of up to 16 blocks those whose operations are mixed. Three hits of an "
     "expression are also two.",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card"/></matchRule>
  <matchRule operation="OR">
    <buildingBlock sourceType="ENTITY" entityHits="2" sourceName="card"/>
    <buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule><buildingBlock sourceType="ENTITY" entityHits="3" sourceName="card"/></matchRule>
  <matchRule operation="OR">
    <buildingBlock sourceType="ENTITY" entityHits="2" sourceName="card"/>
    <buildingBlock sourceType="KEYWORD" sourceName="words" operation="AND"/>
  </matchRule>
</template>)"},
    {ECode::CATEGORY_TWICE, "DLP064", ESeverity::WARNING, "category-twice",
     "the {} {} names the template {} twice",
     "remove one of the entries",
     "The template is stored with the category twice, and exported so.",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
  </complianceTemplates>
  <industries>
    <industry name="banking"><template_id>cards</template_id></industry>
    <industry name="banking"><template_id>cards</template_id></industry>
  </industries>
</SAPolicy>)",
     R"(<SAPolicy template_version="3.0.1000">
  <complianceTemplates>
    <template name="cards" display_name="Cards">
      <matchRule><buildingBlock sourceType="KEYWORD" sourceName="words"/></matchRule>
    </template>
    <template name="Cards" display_name="More cards">
      <matchRule><buildingBlock sourceType="ENTITY" entityHits="1" sourceName="card"/></matchRule>
    </template>
  </complianceTemplates>
  <industries>
    <industry name="banking"><template_id>cards</template_id></industry>
    <industry name="banking"><template_id>Cards</template_id></industry>
  </industries>
</SAPolicy>)"},
    {ECode::MIXED_OPERATIONS, "DLP065", ESeverity::NOTE, "mixed-operations",
     "the {} are joined by AND as well as by OR{}",
     "write several rules, each joined by one operation, and join these by one as well",
     "Nothing in a policy says what belongs together. dlpctl joins from left to right, so that A OR B AND C "
     "asks for C and for A or B; whoever lets AND go first finds A alone enough. Where both find the same, as in "
     "A AND B OR C, nothing is said; where they do not, the message has an example.",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="5" sourceName="card" operation="OR"/>
    <buildingBlock sourceType="ENTITY" entityHits="3" sourceName="card" operation="AND"/>
  </matchRule>
</template>)",
     R"(<template name="notes" display_name="Notes">
  <matchRule>
    <buildingBlock sourceType="KEYWORD" sourceName="words"/>
    <buildingBlock sourceType="ENTITY" entityHits="5" sourceName="card" operation="OR"/>
  </matchRule>
  <matchRule operation="AND">
    <buildingBlock sourceType="ENTITY" entityHits="3" sourceName="card"/>
  </matchRule>
</template>)"},
    {ECode::SAME_DISPLAY_NAME, "DLP066", ESeverity::NOTE, "same-display-name",
     "two {} have the display name {}",
     "give one of them another display name",
     "Where people choose by display names, the two cannot be told apart.",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>
<entity name="customer" type="Generic" display_name="Account">
  <regularExpression>\d{9}</regularExpression>
</entity>)",
     R"(<entity name="account" type="Generic" display_name="Account">
  <regularExpression>\d{8}</regularExpression>
</entity>
<entity name="customer" type="Generic" display_name="Accounts">
  <regularExpression>\d{9}</regularExpression>
</entity>)"},
    {ECode::ALREADY_STORED, "DLP070", ESeverity::NOTE, "already-stored",
     "the store has the {} {} already",
     "import without --skip-existing to replace it",
     "Told in reports of imports. With --skip-existing what is stored stays as it is.",
     "(an import with --skip-existing of an item whose name is stored)",
     "(the same import without it)"},
    {ECode::NOT_IN_DOCUMENT, "DLP071", ESeverity::ERROR, "not-in-document",
     "no item of the document has the name {}",
     "correct the name after --only",
     "Told in reports of imports. The items that --only names are taken by their internal names.",
     "(an import with --only of a name that the document has not)",
     "(the same import with a name that it has)"},
    {ECode::IMPORT_FAILED, "DLP072", ESeverity::ERROR, "import-failed",
     "nothing of the file was taken: {}",
     "import the file again once the reason is gone",
     "Told in reports of imports. The store or memory failed, the import was interrupted, or "
     "--fail-on-skip was given and an item cannot be taken.",
     "(an import into a store whose disk is full)",
     "(an import into one that has room)"},
};
// clang-format on

constexpr bool IsInOrder() {
    std::size_t iRow = 0;
    for (const SCodeRow& row : CODES) {
        if (static_cast<std::size_t>(row.eCode) != iRow++) {
            return false;
        }
    }
    return iRow == static_cast<std::size_t>(ECode::COUNT);
}
static_assert(IsInOrder());

}  // namespace

std::span<const SCodeRow> GetCodeTable() {
    return CODES;
}
