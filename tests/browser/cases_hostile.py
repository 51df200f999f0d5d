"""Names come from the fabric, and anyone may set them."""

import re

BIDIRECTIONAL = re.compile("[\u202a-\u202e\u2066-\u2069]")
NAMES = [
    "</script><img src=x onerror=window.harm=1>",
    "<script>window.harm=2</script>",
    "<!--<script>",
    "<b onclick=\"window.harm=3\">bold</b>",
    "]]>&lt;&amp;&#60;",
    "\"'`${window.harm=4}\\",
    "javascript:window.harm=5",
    "\u05e9\u05dc\u05d5\u05dd \u202e\u202d\u2066",
    "\u2028\u2029\ufffd\ud7ff",
    "@FABSCOPE_DATA@",
    "__proto__",
    "constructor",
    "W" * 1000000,
    "\U0001f9ff" * 200,
    " ",
]


def check_harmless(page):
    assert page.run("return window.harm") is None
    assert page.run("return [document.images.length, document.scripts.length,"
                       " document.querySelectorAll('[onclick], [onerror], [style] script').length]"
                       ) == [0, 2, 0]


def names_are_text_and_nothing_else(browser):
    fabric = browser.renamed("faulty", NAMES)
    browser.open(fabric)
    check_harmless(browser)
    rows = browser.run("return document.querySelectorAll('#list .row').length")
    assert rows == len(fabric.findings)
    text = "\n".join(browser.texts("#list .row"))
    seen = [name for name in NAMES[:7] if name in text]
    assert len(seen) > 2, text
    for at in range(rows):
        browser.run("document.querySelectorAll('#list .row')[arguments[0]].click()", at)
    check_harmless(browser)


def every_view_bears_every_name(browser):
    fabric = browser.renamed("faulty", NAMES)
    for at, guid in enumerate(list(fabric.switches)[:len(NAMES)]):
        browser.open(fabric, f"#switch={guid}")
        shown = browser.text("#card h3")
        expected = BIDIRECTIONAL.sub("?", NAMES[at].strip())
        if expected == "":
            assert shown == "Switch without a name"
        elif len(expected) <= 64 and "\u2028" not in expected:
            assert shown == expected, (shown, expected)
        else:
            assert len(shown) <= 401
        for view in ("matrix", "switches"):
            browser.click(f"#tab-{view}")
        check_harmless(browser)


def names_of_a_megabyte_are_cut(browser):
    browser.open(browser.renamed("faulty", ["W" * 1000000]))
    longest = browser.run("return Math.max(...Array.from(document.querySelectorAll('#list bdi'),"
                          " (one) => one.textContent.length))")
    assert 10 < longest <= 64
    assert browser.run("return document.documentElement.scrollWidth <= innerWidth")


def the_page_may_do_nothing_but_show(browser):
    fabric = browser.open(browser.fabric("clean"))
    policy = browser.run("return document.head.firstElementChild.content")
    assert policy.startswith("default-src 'none'; script-src 'sha256-")
    assert "unsafe" not in policy and "http" not in policy
    browser.run("""
        const script = document.createElement('script')
        script.textContent = 'window.harm = 1'
        document.body.append(script)
        const image = new Image()
        image.src = 'https://fabric.invalid/'
        document.body.append(image)""")
    assert browser.run("return window.harm") is None
    asked = browser.driver.execute_async_script(
        "const done = arguments[0]; fetch('https://fabric.invalid/').then(() => done('sent'),"
        " () => done('refused'))")
    assert asked == "refused"
    refused = browser.driver.get_log("browser")
    assert len(refused) >= 3 and all("Content Security Policy" in one["message"] for one in refused
                                     if "fabric.invalid" in one["message"]), refused
    assert fabric.findings == []
