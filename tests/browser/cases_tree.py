"""The tree shows what is wrong so that it can be told apart."""

# Of port numbers; counts of findings are white.
INK = "#17202b"


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
