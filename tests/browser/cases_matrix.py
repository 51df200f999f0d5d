"""The matrix shows which of its switches is wrong."""

from browser import ARROWS

RED = "#c4241c"


def words_of(group):
    return f"{group['kind'].replace(' ', '-')}-{group['id']}"


def show_group(browser, fabric, group, more=""):
    browser.open(fabric, f"#view=matrix&group={words_of(group)}{more}")
    browser.until_drawn("matrix")
    browser.run("document.querySelector('#matrix-view canvas').focus()")
    browser.record()


def group_of(fabric, finding):
    return next(group for group in fabric.result["groups"]
                if (group["kind"], group["id"]) == (finding["groupKind"], finding["groups"][0]))


def odd_ones(fabric):
    """By set: expected, and who has another number."""
    return {one["set"]: (one["expected"], [guid for count in one["counts"]
                                           for guid in count["switches"]])
            for one in fabric.of_kind("uneven-links")}


def red_texts(page):
    return {text for colour, text, *_ in page.drawn("fillText") if colour == RED}


def the_switch_with_fewer_cables_is_the_wrong_one(browser):
    fabric = browser.fabric("tie")
    group, = fabric.result["groups"]
    odd = odd_ones(fabric)
    expected, (spine,) = odd["spines"]
    assert len(group["spines"]) == 2 and set(odd) == {"spines", "lines"}
    show_group(browser, fabric, group)
    for row, guid in enumerate(group["spines"]):
        browser.keys(*([ARROWS["down"]] + [ARROWS["right"]] * (len(group["lines"]) + 1)
                       if row == 0 else [ARROWS["down"]]))
        assert browser.said().startswith(f"{fabric.name(guid)}: "), browser.said()
        assert (f" instead of {expected}" in browser.said()) == (guid == spine), browser.said()
    counts = {str(count["count"]) for one in fabric.of_kind("uneven-links")
              for count in one["counts"]}
    assert red_texts(browser) == counts | {fabric.name(guid) for one in odd.values()
                                           for guid in one[1]}


def small_cells_mark_what_they_have_no_room_to_tell(browser):
    fabric = browser.fabric("tie")
    group, = fabric.result["groups"]
    odd = sum(len(guids) for _, guids in odd_ones(fabric).values())
    show_group(browser, fabric, group)
    browser.drawn("fillRect")
    browser.keys("-")
    assert [one for one in browser.drawn("fillRect") if one[0] == RED] == []
    for _ in range(4):
        browser.keys("-")
        browser.drawn("fillRect")
    browser.keys("-")
    red = [one for one in browser.drawn("fillRect") if one[0] == RED]
    assert len({tuple(one) for one in red}) == odd, red


def uneven_counts_lead_to_the_group_with_the_links(browser):
    fabric = browser.fabric("swapped")
    switch = {}
    for finding in fabric.of_kind("uneven-links"):
        if (finding["set"], finding["direction"]) == ("spines", "up"):
            switch[finding["counts"][0]["switches"][0]] = finding
    guid, finding = next(iter(switch.items()))
    own = group_of(fabric, finding)
    other = next(one for one in fabric.result["groups"] if guid in one["lines"])
    number = fabric.findings.index(finding) + 1
    show_group(browser, fabric, other)
    browser.click("#order option[value='found']")
    browser.click(f"[data-finding='{number - 1}']")
    group = "return document.querySelector('#matrix-view canvas').dataset.group"
    assert browser.run(group) == f"{own['kind']} {own['id']}"
    assert fabric.name(guid) in red_texts(browser)
    name = f"{other['kind']} {other['id']}"
    button, = [one for one in browser.all(".details .small") if one.text == f"Matrix of {name}"]
    button.click()
    assert browser.run(group) == name
    assert fabric.name(guid) in red_texts(browser)


def heads_keep_the_end_that_tells_switches_apart(browser):
    before = "building-seven-second-floor-row-14-"
    fabric = browser.renamed("faulty", [f"{before}switch{at:03}" for at in range(100, 180)])
    group = fabric.result["groups"][4]
    show_group(browser, fabric, group)
    browser.keys("+")
    heads = {text for _, text, *_ in browser.drawn("fillText")}
    for guid in [*group["spines"], *group["lines"]]:
        assert f"…{fabric.name(guid).removeprefix(before)}" in heads, heads
