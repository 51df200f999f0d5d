"""The tree shows what is wrong so that it can be told apart."""

from cases_use import point

# Of port numbers; counts of findings are white.
INK = "#17202b"
WHITE = "#ffffff"


def a_cable_back_to_its_switch_is_a_loop_with_its_ports_apart(browser):
    fabric = browser.with_loop("clean")
    finding, = fabric.of_kind("invalid-link")
    browser.open(fabric)
    browser.record()
    browser.click(f"[data-finding='{fabric.findings.index(finding)}']")
    browser.drawn("fillText")
    browser.run("document.querySelector('#tree-view canvas').focus()")
    browser.keys("+")
    texts = browser.drawn("fillText")
    ports = [str(end["port"]) for end in finding["ends"]]
    last = [[one for one in texts if one[:2] == [INK, port]][-1] for port in ports]
    (_, _, x, y), (_, _, far_x, far_y) = last
    assert abs(y - far_y) < 1 and abs(x - far_x) > 20, last


def badges(page):
    """Where the counts of findings stand in the tree, and what the tip says of each."""
    left, top, width, height = page.run(
        "const b = document.querySelector('#tree-view canvas').getBoundingClientRect();"
        "return [b.left, b.top, b.width, b.height]")
    page.picture()
    # The last picture is drawn anew when the pointer leaves.
    page.run("drawn.length = 0; document.querySelector('#tree-view canvas').dispatchEvent("
             "new PointerEvent('pointerleave'))")
    found = []
    for _, text, x, y, *_ in [one for one in page.drawn("fillText") if one[0] == WHITE]:
        if not (0 < x < width and 0 < y < height):
            continue
        point(page, "mouseMoved", left + x, top + y)
        found.append((left + x, top + y, int(text), page.texts("#tip:not([hidden]) > *")))
    return found


def a_count_of_several_groups_names_them_and_parts_them(browser):
    fabric = browser.open(browser.fabric("crowded"))
    by_group = {f"{group['kind'].capitalize()} {group['id']}":
                sum(1 for one in fabric.findings if one["groupKind"] == group["kind"]
                    and group["id"] in one["groups"]) for group in fabric.result["groups"]}
    browser.run("document.querySelector('#repairs').open = false")
    browser.record()
    before = badges(browser)
    several = [one for one in before if one[3][0].endswith(" groups")]
    assert several
    for _, _, _, (title, *lines, click) in several:
        assert title == f"{len(lines)} groups" and click == "Click to come nearer"
        for name, count in (line.split(": ") for line in lines):
            assert int(count.split()[0]) == by_group[name] > 0
    names = {line.split(":")[0] for line in several[0][3][1:-1]}
    x, y = several[0][:2]
    point(browser, "mousePressed", x, y)
    point(browser, "mouseReleased", x, y)
    after = {tip[0] for _, _, _, tip in badges(browser)}
    assert names <= after, (names, after)


def names_keep_the_end_that_tells_switches_apart(browser):
    before = "building-seven-second-floor-row-14-"
    fabric = browser.renamed("swapped", [f"{before}switch{at:03}" for at in range(100, 180)])
    finding = fabric.of_kind("missing-link")[0]
    browser.open(fabric)
    browser.record()
    browser.click(f"[data-finding='{fabric.findings.index(finding)}']")
    names = {text for _, text, *_ in browser.drawn("fillText")}
    for guid in (finding["spine"], finding["line"]):
        assert f"…{fabric.name(guid).removeprefix(before)}" in names, names
