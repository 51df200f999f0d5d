"""What a reader does with the page."""

import json

from browser import ARROWS, DESKTOP, PHONE
from selenium.webdriver.common.actions.action_builder import ActionBuilder
from selenium.webdriver.common.actions.interaction import POINTER_TOUCH
from selenium.webdriver.common.actions.pointer_input import PointerInput
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys


def shown(page):
    """Numbers of the findings that the list shows."""
    return page.run("return Array.from(document.querySelectorAll('#list .row'),"
                       " (row) => Number(row.dataset.finding))")


def current(page):
    return page.run("return document.querySelector('.row[aria-current]')?.dataset.finding")


def switches_of(finding):
    """GUIDs that a finding names."""
    return {word for word in json.dumps(finding).split('"') if word.startswith("0x")}


def a_click_on_a_finding_shows_it(browser):
    fabric = browser.open(browser.fabric("faulty"))
    before = browser.picture()
    for kind in ("missing-link", "invalid-link", "uneven-links"):
        finding = fabric.of_kind(kind)[0]
        index = fabric.findings.index(finding)
        browser.click(f"[data-finding='{index}']")
        row = browser.one(f"[data-finding='{index}']")
        assert row.get_attribute("aria-current") == "true"
        assert row.get_attribute("aria-expanded") == "true"
        assert len(browser.all("[aria-current]")) == 1
        assert browser.said().startswith("Shown: ")
        assert f"finding={index + 1}" in browser.address()
        name = f"{finding['groupKind'].capitalize()} {finding['groups'][0]}"
        assert browser.run("return document.getElementById('group').selectedOptions[0].text"
                           ).startswith(name)
        after = browser.picture()
        assert after != before
        before = after
    browser.click(f"[data-finding='{index}']")
    assert browser.all("[aria-current]") == []


def the_search_finds_names_guids_and_ports(browser):
    fabric = browser.open(browser.fabric("faulty"))
    finding = fabric.of_kind("invalid-link")[0]
    end = finding["ends"][0]
    search = browser.one("#search")
    for words in (end["switch"], fabric.name(end["switch"]).upper()):
        search.clear()
        search.send_keys(words)
        expected = {at for at, one in enumerate(fabric.findings) if end["switch"] in switches_of(one)}
        assert expected and set(shown(browser)) == expected
    search.clear()
    search.send_keys(f"{fabric.name(end['switch'])} port {end['port']}")
    assert shown(browser) == [fabric.findings.index(finding)]
    search.clear()
    search.send_keys("no CABLE between")
    assert set(shown(browser)) == {
        at for at, one in enumerate(fabric.findings) if one["kind"] == "missing-link"}
    search.clear()
    search.send_keys("no such thing")
    assert shown(browser) == []
    assert browser.text("#list") == "No finding matches."


def numbers_and_choices_filter_the_list(browser):
    fabric = browser.open(browser.fabric("faulty"))
    for kind in sorted({finding["kind"] for finding in fabric.findings}):
        browser.click(f"[data-kind='{kind}']")
        assert browser.one(f"[data-kind='{kind}']").get_attribute("aria-pressed") == "true"
        assert {fabric.findings[at]["kind"] for at in shown(browser)} == {kind}
        assert len(shown(browser)) == len(fabric.of_kind(kind))
    browser.click(f"[data-kind='{kind}']")
    assert len(shown(browser)) == len(fabric.findings)
    finding = fabric.of_kind("missing-link")[0]
    name = f"{finding['groupKind'].capitalize()} {finding['groups'][0]}"
    for option in browser.one("#in-group").find_elements(By.TAG_NAME, "option"):
        if option.text == name:
            option.click()
            break
    assert set(shown(browser)) == {
        at for at, one in enumerate(fabric.findings)
        if one["groupKind"] == finding["groupKind"] and finding["groups"][0] in one["groups"]}


def the_list_of_one_switch_is_a_click_away(browser):
    fabric = browser.fabric("faulty")
    guid = fabric.of_kind("missing-link")[0]["spine"]
    browser.open(fabric, f"#switch={guid}")
    browser.click("#card .small")
    assert set(shown(browser)) == {
        at for at, one in enumerate(fabric.findings) if guid in switches_of(one)}


def the_list_has_an_order_of_choice(browser):
    fabric = browser.open(browser.fabric("faulty"))
    orders = {"found": lambda at: at, "level": lambda at: (-fabric.findings[at]["level"], at)}
    for order, key in orders.items():
        browser.click(f"#order option[value='{order}']")
        assert shown(browser) == sorted(range(len(fabric.findings)), key=key)


def long_lists_are_shown_in_part(browser):
    fabric = browser.open(browser.fabric("four", "--root-regex", "^spine", "--merge-percent", "20"))
    count = len(fabric.findings)
    assert count > 200, count
    assert len(shown(browser)) == 100
    assert browser.text("#shown") == f"100 of {count:,} shown"
    browser.click(".more")
    assert len(shown(browser)) == 200
    browser.open(fabric, f"#finding={count}&order=found")
    assert current(browser) == str(count - 1)
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert len(shown(browser)) == min(1000, count)


def paper_names_every_switch_and_port(browser):
    kinds = set()
    for name in ("faulty", "planes"):
        fabric = browser.open(browser.fabric(name), "#finding=1")
        browser.run("dispatchEvent(new Event('beforeprint'))")
        for index, finding in enumerate(fabric.findings):
            text, details = browser.run(
                "const row = document.querySelector(`[data-finding='${arguments[0]}']`).parentElement;"
                "return [row.innerText, row.querySelectorAll('.details').length]", index)
            assert details <= 1
            for guid in switches_of(finding):
                assert fabric.name(guid) in text, text
            for _, port in finding.get("ports", []):
                assert f"port {port}" in text, text
            kinds.add(finding["kind"])
    assert {"uneven-links", "asymmetric-aports"} <= kinds
    browser.run("dispatchEvent(new Event('afterprint'))")
    assert len(browser.all(".list .details")) == 1


def the_address_keeps_what_is_shown(browser):
    fabric = browser.open(browser.fabric("faulty"))
    browser.click("[data-kind='missing-link']")
    browser.one("#search").send_keys("pod")
    browser.run("document.querySelector('#list .row').click()")
    browser.click("#tab-matrix")
    address, finding, rows = browser.address(), current(browser), shown(browser)
    browser.open(fabric, address)
    assert browser.one("#matrix-view").is_displayed()
    assert current(browser) == finding and shown(browser) == rows
    assert browser.one("#search").get_attribute("value") == "pod"
    browser.open(fabric, "#view=nothing&finding=99999&group=neighborhood-77&switch=0x0&order=%00")
    assert current(browser) is None and browser.one("#tree-view").is_displayed()


def keys_do_what_the_help_says(browser):
    browser.open(browser.fabric("faulty"))
    browser.keys("?")
    assert browser.one("#keys").is_displayed()
    browser.keys(Keys.ESCAPE)
    assert not browser.one("#keys").is_displayed()
    for key, view in (("2", "matrix"), ("3", "switches"), ("1", "tree")):
        browser.keys(key)
        assert browser.one(f"#{view}-view").is_displayed()
        assert browser.one(f"#tab-{view}").get_attribute("aria-selected") == "true"
    rows = shown(browser)
    browser.keys("j")
    browser.keys("j")
    assert current(browser) == str(rows[1])
    browser.keys("k")
    assert current(browser) == str(rows[0])
    browser.keys(ARROWS["down"])
    assert browser.run("return document.activeElement.dataset.finding") == str(rows[1])
    browser.keys(Keys.ESCAPE)
    assert current(browser) is None
    browser.keys("/")
    assert browser.run("return document.activeElement.id") == "search"
    browser.keys("t2")
    assert browser.one("#search").get_attribute("value") == "t2"
    assert browser.one("#tree-view").is_displayed()


def keys_go_on_behind_the_rows_that_were_made(browser):
    fabric = browser.open(browser.fabric("four", "--root-regex", "^spine", "--merge-percent", "20"))
    assert len(fabric.findings) > 200
    browser.run("document.querySelectorAll('#list .row')[99].click()")
    browser.keys("j")
    rows = shown(browser)
    assert len(rows) == 200 and current(browser) == str(rows[100])
    assert browser.run("return document.activeElement.dataset.finding") == str(rows[100])
    browser.run("document.querySelectorAll('#list .row')[199].focus()")
    browser.keys(ARROWS["down"])
    rows = shown(browser)
    assert len(rows) > 200
    assert browser.run("return document.activeElement.dataset.finding") == str(rows[200])


def the_tree_can_be_walked_with_keys(browser):
    fabric = browser.open(browser.fabric("faulty"))
    browser.run("document.querySelector('#tree-view canvas').focus()")
    before = browser.picture()
    browser.keys(ARROWS["right"])
    root = fabric.name(fabric.result["groups"][0]["spines"][0])
    assert browser.said().startswith(f"{root}, rank 0"), browser.said()
    browser.keys(ARROWS["down"])
    assert ", rank 1, " in browser.said()
    browser.keys(ARROWS["down"])
    assert ", rank 2, " in browser.said()
    name = browser.said().split(",")[0]
    browser.keys("\n")
    assert browser.text("#card h3") == name
    assert browser.picture() != before


def the_picture_can_be_moved_and_enlarged(browser):
    browser.open(browser.fabric("faulty"))
    browser.run("document.querySelector('#tree-view canvas').focus()")
    whole = browser.picture()
    browser.keys("+")
    larger = browser.picture()
    browser.keys(Keys.SHIFT, ARROWS["left"])
    moved = browser.picture()
    browser.keys("0")
    assert len({whole, larger, moved}) == 3
    assert browser.picture() == whole


def colours_follow_the_system_and_the_choice(browser):
    def light(script):
        red, green, blue = browser.run(script)
        return (red + green + blue) / 3 > 128

    page = ("return getComputedStyle(document.body).backgroundColor.match(/[0-9]+/g)"
            ".slice(0, 3).map(Number)")
    corner = """
        const copy = new OffscreenCanvas(1, 1).getContext('2d', { willReadFrequently: true })
        copy.drawImage(document.querySelector('#tree-view canvas'), -2, -2)
        return Array.from(copy.getImageData(0, 0, 1, 1).data.slice(0, 3))"""
    fabric = browser.fabric("faulty")
    for scheme, expected in (("dark", False), ("light", True)):
        browser.colours(scheme)
        browser.open(fabric)
        assert light(page) == light(corner) == expected
        browser.click("#theme")
        assert light(page) == light(corner) == (not expected)
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert light(page) and light(corner)


def findings_are_copied_as_text(browser):
    fabric = browser.open(browser.fabric("faulty"))
    browser.run("window.copied = []; navigator.clipboard.writeText ="
                " (text) => { copied.push(text); return Promise.resolve() }")
    browser.click("#copy-all")
    text = browser.run("return copied[0]")
    heads = [line for line in text.split("\n") if line.startswith("[")]
    assert len(heads) == len(fabric.findings)
    for finding in fabric.of_kind("invalid-link"):
        for end in finding["ends"]:
            assert f"{fabric.name(end['switch'])} port {end['port']}" in text
            assert end["switch"] in text
    browser.run("document.querySelector('#list .row').click()")
    browser.all(".details .small")[-1].click()
    assert text.startswith(browser.run("return copied[1]"))


def everything_has_a_name_for_those_who_do_not_see(browser):
    fabric = browser.fabric("faulty")
    guid = fabric.of_kind("missing-link")[0]["spine"]
    browser.open(fabric, f"#finding=1&switch={guid}")
    browser.driver.execute_cdp_cmd("Accessibility.enable", {})
    nodes = browser.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
    needing = {"button", "tab", "searchbox", "combobox", "link", "dialog", "application",
               "tabpanel", "heading", "list"}
    seen = set()
    for node in nodes:
        role = node.get("role", {}).get("value")
        if node.get("ignored") or role not in needing - {"list"}:
            continue
        seen.add(role)
        assert node.get("name", {}).get("value", "").strip(), node
    assert {"button", "tab", "searchbox", "combobox", "application", "heading"} <= seen


def point(browser, kind, x, y):
    browser.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {
        "type": kind, "x": x, "y": y, "button": "none" if kind == "mouseMoved" else "left",
        "clickCount": 0 if kind == "mouseMoved" else 1})


def tree_box(page):
    """Where the tree is drawn, once the repairs above it are folded."""
    return page.run("document.querySelector('#repairs').open = false;"
                    "const b = document.querySelector('#tree-view canvas')"
                    ".getBoundingClientRect(); return [b.left, b.top, b.width, b.height]")


def switch_under_pointer(page):
    """A place where a switch is, and what the tip says of it."""
    left, top, width, height = tree_box(page)
    for y in range(int(top), int(min(top + height, 780)), 11):
        for x in range(int(left) + 100, int(left + width), 12):
            point(page, "mouseMoved", x, y)
            lines = page.texts("#tip:not([hidden]) > *")
            if len(lines) > 1 and lines[1].startswith("0x"):
                return x, y, lines
    raise AssertionError("no switch is found by the pointer")


def the_pointer_finds_switches(browser):
    fabric = browser.open(browser.fabric("faulty"))
    browser.picture()
    x, y, lines = switch_under_pointer(browser)
    name, guid = lines[:2]
    assert fabric.name(guid) == name
    rank = next(at for at, guids in enumerate(fabric.result["ranks"]) if guid in guids)
    assert f"Rank {rank}" in lines[2]
    point(browser, "mousePressed", x, y)
    point(browser, "mouseReleased", x, y)
    assert browser.text("#card h3") == name
    assert f"switch={guid}" in browser.address()


def fingers_move_enlarge_and_choose(browser):
    def touch(kind, *points):
        browser.driver.execute_cdp_cmd("Input.dispatchTouchEvent", {
            "type": kind, "touchPoints": [{"x": x, "y": y, "id": at}
                                          for at, (x, y) in enumerate(points)]})

    browser.size(PHONE)
    browser.driver.execute_cdp_cmd("Emulation.setTouchEmulationEnabled",
                                   {"enabled": True, "maxTouchPoints": 2})
    browser.open(browser.fabric("faulty"))
    left, top, width, _ = tree_box(browser)
    x, y = left + width / 2, top + 150
    pictures = {browser.picture()}
    touch("touchStart", (x - 20, y), (x + 20, y))
    for step in range(1, 6):
        touch("touchMove", (x - 20 - 10 * step, y), (x + 20 + 10 * step, y))
    touch("touchEnd")
    pictures.add(browser.picture())
    touch("touchStart", (x, y))
    for step in range(1, 6):
        touch("touchMove", (x + 10 * step, y))
    touch("touchEnd")
    pictures.add(browser.picture())
    assert len(pictures) == 3
    finger = ActionBuilder(browser.driver, mouse=PointerInput(POINTER_TOUCH, "finger"))
    place = browser.one("#tab-matrix").rect
    finger.pointer_action.move_to_location(int(place["x"] + 20), int(place["y"] + 10))
    finger.pointer_action.pointer_down().pointer_up()
    finger.perform()
    assert browser.one("#matrix-view").is_displayed()


def nothing_is_wider_than_a_phone(browser):
    browser.size(PHONE)
    for name in ("faulty", "planes"):
        fabric = browser.fabric(name)
        guid = fabric.result["ranks"][1][0]
        for fragment in ("", "#finding=1", "#view=matrix", "#view=switches", f"#switch={guid}"):
            browser.open(fabric, fragment)
            assert browser.run("return document.documentElement.scrollWidth") <= PHONE[0], fragment


def tips_stay_inside_the_window(browser):
    fabric = browser.renamed("faulty", [f"{'W' * 300}{at}" for at in range(200)])
    for size in (DESKTOP, PHONE):
        browser.size(size)
        browser.open(fabric)
        seen = 0
        box = tree_box(browser)
        for step in range(60):
            x = box[0] + box[2] * (step % 20 + 0.5) / 20
            y = min(box[1] + box[3] * (step // 20 + 0.5) / 3, size[1] - 2)
            point(browser, "mouseMoved", x, y)
            tip = browser.run("const t = document.getElementById('tip');"
                              "const b = t.getBoundingClientRect();"
                              "return t.hidden ? null : [b.left, b.top, b.right, b.bottom]")
            if tip:
                seen += 1
                assert tip[0] >= 0 and tip[1] >= 0 and tip[2] <= size[0] and tip[3] <= size[1], tip
        assert seen > 0
