// SPDX-License-Identifier: Apache-2.0
// The rest of the page: colours, front panel, wire, faults; who may use it, and on what.
#include "browser_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace
{

class ScreenPage : public BrowserTest
{
  protected:
    /* Shows what is hidden in the groups of the list of settings. */
    void openGroups()
    {
        look("document.querySelectorAll('#groups details').forEach((each) => { each.open = true; })");
    }
    void choose(const std::string &setting, const std::string &words)
    {
        browser().type("[data-setting=\"" + setting + "\"]", words);
    }
};

/* 40 bytes from hexadecimal text, as the tests of the library have them: "..." is zeros to the end. */
std::string message(const std::string &text)
{
    std::string digits;
    for (const char each : text) {
        if (each != ' ' && each != '.') {
            digits += static_cast<char>(tolower(each));
        }
    }
    digits.resize(80, '0');
    return digits;
}

const std::string arrowRight = "\xEE\x80\x94"; // the code of the key in WebDriver, U+E014
const std::string enter = "\xEE\x80\x87";      // U+E007
const std::string tab = "\xEE\x80\x84";        // U+E004

} // namespace

// ---- colour ----

TEST_F(ScreenPage, HasTheSpectralLocusAsPublished)
{
    struct Point {
        int wavelength;
        const char *x;
        const char *y;
    };
    for (const Point &each :
         {Point{380, "0.1741", "0.0050"}, Point{460, "0.1440", "0.0297"}, Point{480, "0.0913", "0.1327"},
          Point{500, "0.0082", "0.5384"}, Point{520, "0.0743", "0.8338"}, Point{540, "0.2296", "0.7543"},
          Point{560, "0.3731", "0.6245"}, Point{580, "0.5125", "0.4866"}, Point{600, "0.6270", "0.3725"},
          Point{620, "0.6915", "0.3083"}, Point{700, "0.7347", "0.2653"}}) {
        const Json found = browser().runLater(
            "const done = arguments[1]; import('/locus.js').then(({ locus }) => { const point = locus.find((each) => "
            "each.wavelength === arguments[0]); done([locus.length, point.x.toFixed(4), point.y.toFixed(4)]); });",
            {each.wavelength});
        EXPECT_EQ(found, Json({65, each.x, each.y})) << each.wavelength;
    }
}

TEST_F(ScreenPage, ShowsThePresetsInBothDiagrams)
{
    EXPECT_EQ(look("document.querySelectorAll('#presets .preset').length"), 7);
    expectSeen(attribute("#presets .active", "data-preset"), "1");
    // x 0.6900 of 0.8 and y 0.3000 of 0.9, on 448 and 466 units from 58 and 14.
    EXPECT_EQ(look("Math.round($('#presets .active .corner').getAttribute('cx'))"), 444);
    EXPECT_EQ(look("Math.round($('#presets .active .corner').getAttribute('cy'))"), 325);
    EXPECT_EQ(look(text("#chromaticities [data-value=red_x]")), "0.6900");
    EXPECT_EQ(look(text("#chromaticities [data-value=white_v]")), "0.4683");

    browser().click("#diagram-uv");
    EXPECT_EQ(look(attribute("#chromaticity", "data-diagram")), "uv");
    EXPECT_EQ(look(attribute("#diagram-uv", "aria-pressed")), "true");
    EXPECT_EQ(look("Math.round($('#presets .active .corner').getAttribute('cx'))"), 422); // u' 0.5287 of 0.65
    EXPECT_EQ(call("Monitor", "SetActiveColorSpace",
                   "ColorSpace=" + told("SCREEN_REFERENCE_HOST") +
                       "/root/cimv2:ZT_Marovelton_ColorSpace.InstanceID=\"ZT:Marovelton_ColorSpace:7\""),
              "0");
    expectSeen(attribute("#presets .active", "data-preset"), "7");
    expectSeen(text("#chromaticities [data-value=green_y]"), "0.7970");
}

TEST_F(ScreenPage, TellsTheValuesOfAPresetThatHasTheFocus)
{
    look("$('#presets [data-preset=\"5\"]').focus()");
    EXPECT_EQ(look(attribute("#chromaticities table", "data-preset")), "5");
    EXPECT_EQ(look(text("#chromaticities [data-value=white_x]")), "0.3457");
    EXPECT_EQ(
        look(attribute("#presets [data-preset=\"5\"]", "aria-label")),
        "sRGB D50. red 0.6400, 0.3300; green 0.3000, 0.6000; blue 0.1500, 0.0600; white 0.3457, 0.3585");
    look("document.activeElement.blur()");
    EXPECT_EQ(look(attribute("#chromaticities table", "data-preset")), "1");
}

// ---- the front panel ----

TEST_F(ScreenPage, FunctionButtonsChangeWhatClientsRead)
{
    browser().click("[data-press=\"1\"]");
    expectRead("Monitor", "InputSource", "1");
    browser().type("[data-press=\"2\"]", enter);
    expectRead("ColorSpace/2", "Active", "TRUE");
    browser().click("[data-press=\"3\"]");
    expectRead("PictureInPicture", "PIPMode", "1");
    browser().type("[data-press=\"4\"]", " ");
    expectRead("PictureInPicture", "PIPPositionX", "160");
    openGroups();
    choose("function_button1.setting", "Blue only");
    expectRead("FunctionButton/1", "Setting", "6");
    expectSeen(text("[data-press=\"1\"] span"), "Blue only");
    browser().click("[data-press=\"1\"]");
    expectRead("ImageAdjustment", "ShowBlueChannel", "TRUE");
}

TEST_F(ScreenPage, BezelButtonsHaveColourBrightnessAndFade)
{
    openGroups();
    choose("bezel_button_color", "Blue");
    expectRead("BezelButton", "ButtonColor", "2");
    expectSeen(attribute("#panel", "data-light"), "Blue");
    browser().type("[data-setting=bezel_button_brightness]", arrowRight + arrowRight);
    expectRead("BezelButton", "ButtonBrightness", "14");
    expectSeen("$('#panel').style.getPropertyValue('--light-brightness')", "0.7");
    choose("bezel_button_auto_fade", "Off");
    expectRead("BezelButton", "ButtonAutoFadeMode", "0");
    expectSeen(attribute("#panel", "data-fade"), "off");
    choose("function_button_mode", "Mode 1");
    expectRead("BezelButton", "ButtonMode", "1");
    EXPECT_EQ(call("BezelButton", "SetButtonColor", "ButtonColor=\"1\""), "0");
    expectSeen(attribute("#panel", "data-light"), "Amber");
    expectSeen("$('[data-setting=bezel_button_color]').selectedOptions[0].textContent", "Amber");
}

TEST_F(ScreenPage, ThePowerButtonPutsTheMonitorIntoStandby)
{
    browser().click("#power-button");
    expectRead("Monitor", "SoftPowerState", "FALSE");
    expectSeen(attribute("#power-button", "aria-pressed"), "false");
    browser().click("[data-press=\"1\"]");
    expectSeen(text("#notice"), "the monitor is in standby: only its power button does something");
    EXPECT_EQ(property("Monitor", "InputSource"), "0");
    browser().errors(); // the browser logs every refusal
    browser().type("#power-button", enter);
    expectRead("Monitor", "SoftPowerState", "TRUE");
}

TEST_F(ScreenPage, TheMenuButtonOpensTheMenu)
{
    browser().click("#menu-button");
    expectSeen(attribute("#menu", "visibility"), "visible");
    EXPECT_EQ(look(attribute("#menu-button", "aria-pressed")), "true");
    browser().click("#menu-button");
    expectSeen(attribute("#menu", "visibility"), "hidden");
}

TEST_F(ScreenPage, EverySettingOfTheListIsThatOfTheMonitor)
{
    openGroups();
    // One of each kind is turned by hand; all others are seen to follow.
    choose("display_aspect_ratio", "Stretch");
    expectRead("ImageAdjustment", "DisplayAspectRatio", "2");
    browser().type("[data-setting=cropped_region_opacity]", arrowRight);
    expectRead("ImageAdjustment", "CroppedRegionOpacity", "51");
    browser().click("[data-cable=\"3\"]");
    expectRead("VideoInput/3", "Active", "TRUE");
    const Json names =
        look("[...document.querySelectorAll('[data-setting]')].map((each) => each.dataset.setting)");
    EXPECT_GE(names.size(), 40u);
    const Json model = look("(() => 0)()") == 0 ? browser().runLater("fetch('/model.json').then((answer) => "
                                                                     "answer.json()).then(arguments[0]);")
                                                : Json();
    for (const Json &name : names) {
        const std::string setting = name.get<std::string>();
        const bool isLuminance = setting == "luminance";
        const Json &row = isLuminance ? model.at("luminance") : model.at("settings").at(setting);
        const std::string least = std::to_string(row.at("minimum").get<int>());
        const std::string most = std::to_string(row.at("maximum").get<int>());
        monitor("set " + (isLuminance ? "preset1.luminance" : setting) + " " + most);
        expectSeen("$('[data-setting=\"" + setting + "\"]').value", most);
        monitor("set " + (isLuminance ? "preset1.luminance" : setting) + " " + least);
        expectSeen("$('[data-setting=\"" + setting + "\"]').value", least);
    }
}

// ---- the wire ----

TEST_F(ScreenPage, MessagesOnTheWireAreThoseOfTheGoldenTests)
{
    struct Case {
        const char *object;
        const char *method;
        const char *arguments;
        const char *bytes;
        const char *what;
        const char *group;
    };
    for (
        const Case &each : {
            Case{"ColorSpace/1", "SetDisplayLuminance", "Luminance=\"120\"",
                 "01 00 00 00 03 00 07 00 00 01 00 00 00 00 78 00 ...", "LUMINANCE = 120", "COLOR_SPACE_ID"},
            Case{"ImageAdjustment", "SetCroppedRegionOpacity", "CroppedRegionOpacity=\"100\"",
                 "01 00 00 00 03 00 07 00 00 01 02 00 22 00 64 00 ...", "OPACITY_CROPPED_REGION = 100",
                 "IMAGE_ADJ_SETTINGS_ID"},
            Case{"OSDMenuAndMessages", "SetOSDPosition", "OSDPositionX=\"2560\",OSDPositionY=\"1440\"",
                 "01 00 00 00 03 00 07 00 00 02 06 00 69 00 00 0A 00 00 00 6A 00 A0 05 ...",
                 "OSD_POSITION_X = 2560, OSD_POSITION_Y = 1440", "MENU_SETTINGS_ID"},
            Case{
                "TestPatternGenerator", "SetRGBValue", "RValue=\"1\",GValue=\"2\",BValue=\"255\"",
                "01 00 00 00 03 00 07 00 00 03 0F 00 AC 00 01 00 00 00 00 AD 00 02 00 00 00 00 AE 00 FF 00 ...",
                "TEST_PATTERN_RED = 1, TEST_PATTERN_GREEN = 2, TEST_PATTERN_BLUE = 255", "TEST_PATTERN_ID"},
        }) {
        const Json before = look("Number($('#messages details')?.dataset.number ?? 0)");
        EXPECT_EQ(call(each.object, each.method, each.arguments), "0");
        expectSeen("Number($('#messages details')?.dataset.number ?? 0) > " + before.dump(), true);
        expectSeen(text("#messages .what"), each.what);
        EXPECT_EQ(look(text("#messages .group")), each.group);
        EXPECT_EQ(look(text("#messages .command")), "SET");
        EXPECT_EQ(look(text("#messages .result")), "answered");
        browser().click("#messages summary");
        expectSeen("$('#messages .bytes')?.dataset.hex", message(each.bytes));
        EXPECT_EQ(
            look(
                "[...document.querySelectorAll('#messages li:first-child .bytes:first-of-type code')].map((each) => "
                "each.textContent).join('').replaceAll(' ', '')"),
            message(each.bytes))
            << "the fields together are the message";
    }
    // A read: the library asks for the whole group.
    EXPECT_EQ(property("ImageAdjustment", "CroppedRegionOpacity"), "100");
    EXPECT_EQ(call("ImageAdjustment", "Set4KSourceScaling", "SourceScaling4K=\"1\""), "0");
    expectSeen(
        "[...document.querySelectorAll('#messages summary')].some((each) => each.textContent.includes('GETIMAGE_ADJ_SETTINGS_IDthe whole group'))",
        true);
}

TEST_F(ScreenPage, MarksTheFieldsOfAMessage)
{
    EXPECT_EQ(call("ColorSpace/1", "SetDisplayLuminance", "Luminance=\"130\""), "0");
    expectSeen(text("#messages .what"), "LUMINANCE = 130");
    browser().click("#messages summary");
    const std::string request = "#messages li:first-child .bytes:first-of-type ";
    expectSeen("[...document.querySelectorAll('" + request +
                   ".field')].map((each) => each.dataset.field).slice(0, 10).join(',')",
               "type,command,source,sequence,count,group,entry type 0,register 0,status 0,value 0");
    EXPECT_EQ(look("document.querySelectorAll('" + request + ".field').length"), 23);
    EXPECT_EQ(look(text(request + "[data-field=\"value 0\"] code")), "82 00 00 00");
    EXPECT_EQ(look(text(request + "[data-field=\"register 0\"] code")), "00");
}

TEST_F(ScreenPage, MarksWhatTheEngineRefused)
{
    // The library looks at the size that is chosen; the engine knows that the window is larger, and does not
    // move it.
    for (const char *each : {"pip_mode 1", "pip_height 1080", "pip_width 1920"}) {
        monitor(std::string("set ") + each);
    }
    EXPECT_EQ(call("PictureInPicture", "SetPIPPosition", "PIPPositionX=\"1688\",PIPPositionY=\"880\""), "0");
    expectSeen(text("#messages .what"), "PIP_POSITION = 4, PIP_POSITION_X = 1688, PIP_POSITION_Y = 880");
    EXPECT_EQ(look(text("#messages .result")), "answered: not applied, refused");
    EXPECT_EQ(look("$('#messages details').className"), "troubled");
    browser().click("#messages summary");
    expectSeen(
        "[...document.querySelectorAll('#messages li:first-child .bytes:last-of-type .differs')].map((each) => "
        "each.dataset.field + ' ' + each.lastChild.textContent).join(',')",
        "status 0 02,status 1 01,status 2 01");
}

TEST_F(ScreenPage, TheWireIsFilteredPausedAndCopied)
{
    EXPECT_EQ(call("ColorSpace/1", "SetDisplayLuminance", "Luminance=\"111\""), "0");
    EXPECT_EQ(call("TestPatternGenerator", "SetTestPattern", "TestPattern=\"3\""), "0");
    expectSeen(text("#messages .what"), "TEST_PATTERN_WEB = 3");
    browser().type("#wire-filter", "luminance 111");
    expectSeen(text("#messages .what"), "LUMINANCE = 111");
    EXPECT_EQ(look("document.querySelectorAll('#messages li').length"), 1);
    browser().command("Browser.grantPermissions",
                      {{"permissions", {"clipboardReadWrite", "clipboardSanitizedWrite"}}});
    browser().click("#wire-copy");
    expectSeen(text("#spoken"), "1 messages copied");
    const std::string copied = browser().runLater(
        "navigator.clipboard.readText().then(arguments[0], (error) => arguments[0](String(error)));");
    EXPECT_NE(copied.find("\tPROCESS_SET_REQUEST\tCOLOR_SPACE_ID\tLUMINANCE = 111\tanswered\t"), copied.npos)
        << copied;
    EXPECT_NE(copied.find("\t01 00 00 00 03 00 07 00 00 01 00 00 00 00 6f 00 "), copied.npos) << copied;

    browser().click("#wire-pause");
    EXPECT_EQ(call("ColorSpace/1", "SetDisplayLuminance", "Luminance=\"112\""), "0");
    expectSeen(text("#wire-count") + ".endsWith(', 1 waiting')", true);
    look("($('#wire-filter').value = '', $('#wire-filter').dispatchEvent(new Event('input')))");
    EXPECT_EQ(look(text("#messages .what")), "TEST_PATTERN_WEB = 3");
    browser().click("#wire-pause");
    expectSeen(text("#messages .what"), "LUMINANCE = 112");
}

// ---- faults ----

TEST_F(ScreenPage, FaultSwitchesDoWhatTheySay)
{
    struct Case {
        const char *fault;
        const char *object;
        const char *method;
        const char *arguments;
        const char *answer;
        const char *outcome; // of the last message; null: none has passed
    };
    const char *const overscan = "OverscanFrame=\"true\"";
    for (const Case &each : {
             Case{"busy", "ImageAdjustment", "SetOverscanFrame", overscan,
                  "Device is Busy. Please try after some time.", nullptr},
             Case{"silent", "ImageAdjustment", "SetOverscanFrame", overscan,
                  "Failed to set the value to OverscanFrame.", "silent"},
             Case{"slow", "ImageAdjustment", "SetOverscanFrame", overscan, "0", "answered"},
             Case{"lose-reply", "ImageAdjustment", "SetOverscanFrame", overscan,
                  "Failed to set the value to OverscanFrame.", "reply lost"},
             Case{"fail-update", "Monitor", "SetDeploymentLocation", "DeploymentLocation=\"Suite\"",
                  "Failed to update.", nullptr},
             Case{"fail-queue", "ImageAdjustment", "SetOverscanFrame", overscan,
                  "Unable to create a message queue for sending message.", nullptr},
             Case{"fail-send", "ImageAdjustment", "SetOverscanFrame", overscan,
                  "Unable to send value to SPEAr.", nullptr},
             Case{"fail-receive", "ImageAdjustment", "SetOverscanFrame", overscan,
                  "Failed to set the value to OverscanFrame.", nullptr},
         }) {
        const std::string button = std::string("#fault-") + each.fault;
        const Json before = look("Number($('#messages details')?.dataset.number ?? 0)");
        if (std::string(each.fault) == "slow") {
            look("$('[data-argument=slow]').value = '0.2'");
        }
        browser().click(button);
        expectSeen(attribute(button, "aria-checked"), "true");
        EXPECT_EQ(call(each.object, each.method, each.arguments), each.answer) << each.fault;
        if (each.outcome != nullptr) {
            expectSeen("Number($('#messages details')?.dataset.number ?? 0) > " + before.dump(), true);
            expectSeen(text("#messages .result"), each.outcome);
        }
        if (std::string(each.fault) == "slow") {
            EXPECT_GE(look("parseFloat(" + text("#messages .duration") + ")"), 200) << "milliseconds";
        }
        if (std::string(each.fault) != "lose-reply") { // which ends by itself
            browser().click(button);
        }
        expectSeen(attribute(button, "aria-checked"), "false");
    }
    browser().type("#fault-fail-read", " ");
    expectSeen(attribute("#fault-fail-read", "aria-checked"), "true");
    EXPECT_NE(property("BezelButton", "ButtonColor").find("Couldn't build instance"), std::string::npos);
    browser().click("#fault-fail-read");
    expectRead("BezelButton", "ButtonColor", "0");
    browser().click("#fault-fail-user");
    expectSeen(attribute("#fault-fail-user", "aria-checked"), "true");
    EXPECT_NE(call("Monitor", "SetDeploymentLocation", "DeploymentLocation=\"Suite\""), "0");
    browser().click("#fault-fail-user");
    expectSeen(attribute("#fault-fail-user", "aria-checked"), "false");
    EXPECT_EQ(call("Monitor", "SetDeploymentLocation", "DeploymentLocation=\"Suite\""), "0");
    browser().click("#fault-standby");
    expectRead("Monitor", "SoftPowerState", "FALSE");
    expectSeen(attribute("#fault-standby", "aria-checked"), "true");
}

TEST_F(ScreenPage, SaysWhatIsWrongWithAnArgument)
{
    look("$('[data-argument=slow]').value = 'soon'");
    browser().click("#fault-slow");
    expectSeen(text("#notice"), "slow: soon is no number of seconds from 0 to 3600");
    EXPECT_EQ(look(attribute("#fault-slow", "aria-checked")), "false");
    browser().errors(); // the browser logs every refusal
}

// ---- who may use it, and on what ----

TEST_F(ScreenPage, OnlyShowsWithoutTheToken)
{
    const std::string url = told("SCREEN_URL");
    EXPECT_EQ(look("location.hash"), "") << "the address bar does not keep the token";
    look("sessionStorage.clear()");
    openPage(url.substr(0, url.find('#')));
    expectSeen(text("#notice") + ".startsWith('This page shows the monitor and changes nothing')", true);
    EXPECT_EQ(
        look(
            "[...document.querySelectorAll('[data-setting],[data-press],[data-fault],[data-cable],#power-button')]"
            ".filter((each) => !each.disabled).length"),
        0);
    expectSeen(text("[data-fact=power] dd"), "On");
}

TEST_F(ScreenPage, ComesBackWhenTheProgramDoes)
{
    const std::string token = told("SCREEN_PROFILE") + ".token";
    const std::string ready = told("SCREEN_PROFILE") + ".ready";
    const auto start = [&](const std::string &port) {
        shell("rm -f " + ready);
        const std::string process = shell("\"$DESK_SCREEN\" --port " + port + " --token-file " + token +
                                          " --ready-file " + ready + " >/dev/null 2>&1 & echo $!");
        shell("until [ -s " + ready + " ] || ! kill -0 " + process.substr(0, process.size() - 1) +
              "; do sleep 0.05; done");
        return process;
    };
    std::string process = start("0");
    const std::string url = shell("cat " + ready);
    openPage(url.substr(0, url.size() - 1));
    expectSeen(text("#connection"), "Live");
    shell("kill " + process);
    expectSeen(text("#connection"), "Connecting again");
    EXPECT_EQ(look(text("[data-fact=power] dd")), "On") << "what was seen stays";
    monitor("set soft_power_state 0");
    const std::size_t colon = url.rfind(':');
    process = start(url.substr(colon + 1, url.find('/', colon) - colon - 1));
    expectSeen(text("#connection"), "Live");
    expectSeen(text("[data-fact=power] dd"), "Standby");
    browser().open("about:blank");
    shell("kill " + process);
    browser().errors(); // the browser logs that nobody answered
}

TEST_F(ScreenPage, FetchesNothingFromElsewhere)
{
    EXPECT_EQ(
        look(
            "performance.getEntriesByType('resource').filter((each) => new URL(each.name).origin !== location.origin).length"),
        0);
    EXPECT_GE(look("performance.getEntriesByType('resource').length"), 10);
    EXPECT_EQ(
        look(
            "document.querySelectorAll('script:not([src]), style, [style]:not(#halo):not(#panel):not(.swatch)').length"),
        0);
    EXPECT_EQ(look(text(".badge") + ".includes('Simulated')"), true);
    EXPECT_EQ(look(text(".badge") + ".includes('displayctl')"), true);
}

TEST_F(ScreenPage, FitsEverySize)
{
    openGroups();
    for (const auto &[width, height] :
         {std::pair{390, 844}, std::pair{768, 1024}, std::pair{1280, 800}, std::pair{3840, 2160}}) {
        browser().show(width, height, {{"prefers-color-scheme", "light"}});
        expectSeen("innerWidth", width);
        EXPECT_LE(look("document.documentElement.scrollWidth"), width);
        EXPECT_GE(look("$('#picture').getBoundingClientRect().width"), std::min(width * 0.5, 340.0)) << width;
    }
}

TEST_F(ScreenPage, RespectsReducedMotion)
{
    const std::string longest = "getComputedStyle($('#halo')).transitionDuration";
    EXPECT_EQ(look(longest), "0.4s");
    browser().show(1600, 1000, {{"prefers-reduced-motion", "reduce"}});
    EXPECT_EQ(look(longest), "0s");
    EXPECT_EQ(
        look(
            "[...document.querySelectorAll('*')].filter((each) => getComputedStyle(each).transitionDuration !== '0s').length"),
        0);
}

TEST_F(ScreenPage, IsUsedByKeyboard)
{
    // From the link at the very beginning, tab by tab.
    EXPECT_EQ(look("$('a, button, input, select').className"), "skip");
    browser().type(".skip", tab);
    std::string order;
    for (int i = 0; i < 6; ++i) {
        order +=
            look("document.activeElement.id || document.activeElement.dataset.press").get<std::string>() +
            " ";
        browser().type(":focus", tab);
    }
    EXPECT_EQ(order, "1 2 3 4 menu-button power-button ");
    const Json unnamed =
        look("[...document.querySelectorAll('button, input, select, [tabindex=\"0\"]')].filter((each) => "
             "!(each.labels?.length || each.textContent.trim() || each.getAttribute('aria-label'))).length");
    EXPECT_EQ(unnamed, 0);
}

TEST_F(ScreenPage, IsAccessible)
{
    const char *file = getenv("SCREEN_AXE");
    if (file == nullptr || !std::ifstream(file)) {
        GTEST_SKIP() << "axe-core is not installed; ./test does that with npm";
    }
    std::stringstream axe;
    axe << std::ifstream(file).rdbuf();
    EXPECT_EQ(call("ColorSpace/1", "SetDisplayLuminance", "Luminance=\"111\""), "0");
    expectSeen(text("#messages .what"), "LUMINANCE = 111");
    openGroups();
    browser().click("#messages summary");
    browser().click("#menu-button");
    struct Case {
        int width;
        const char *scheme;
    };
    for (const Case &each : {Case{1600, "light"}, Case{1600, "dark"}, Case{390, "dark"}}) {
        browser().show(each.width, 900,
                       {{"prefers-color-scheme", each.scheme}, {"prefers-reduced-motion", "reduce"}});
        browser().run(axe.str());
        const Json found = browser().runLater(
            "const done = arguments[0]; axe.run(document).then((result) => done({ passes: result.passes.length, violations: "
            "result.violations.map((each) => each.id + ': ' + each.nodes.map((node) => node.target + ' ' + "
            "node.failureSummary).join('; ')) }));");
        EXPECT_EQ(found.at("violations"), Json::array()) << each.width << " " << each.scheme;
        EXPECT_GE(found.at("passes"), 20) << "it has looked at something";
    }
}
