# shellcheck shell=bash
# Sourced by ./run on a virtual display: waits until news, or the question for a login, is really on screen and takes
# the pictures.
# shellcheck disable=SC2154  # state, url, standin and desktop are set by ./run

main_window() { xdotool search --onlyvisible --name '^云雀资讯$' 2>/dev/null | head -n 1; }
main_window_visible() { [ -n "$(main_window)" ]; }

# How many different colours the news table's column of times shows: without news there is nothing in it, and smoothed
# digits have dozens.
colours_of_times() {
    import -silent -window "$(main_window)" -crop 50x400+12+360 +repage -format '%k' info: 2>/dev/null || echo 0
}
news_on_screen() { [ "$(colours_of_times)" -gt 40 ]; }
# The popup is the desktop's only window that is 640 wide.
popup() {
    local window
    for window in $(xdotool search --onlyvisible --pid "$desktop" 2>/dev/null); do
        if xdotool getwindowgeometry "$window" 2>/dev/null | grep -q 'Geometry: 640x'; then
            echo "$window"
            return 0
        fi
    done
    return 1
}
popup_visible() { [ -n "$(popup)" ]; }
popup_painted() { [ "$(import -silent -window "$(popup)" -format '%k' info: 2>/dev/null || echo 0)" -gt 20 ]; }
# News of a run before may still be worth one.
popup_settled() { ! popup_visible || popup_painted; }
# An item that matches one of the demonstration account's keywords, so that a popup is due at the next tick.
publish_keyword_item() {
    curl -sS --fail --max-time 10 -o /dev/null -H 'Content-Type: application/json' "$url/admin/news" -d '{
        "title": "人工智能算力需求继续增长，多家公司披露新订单",
        "content": "多家上市公司披露算力服务器订单。【模拟数据，仅供演示】",
        "source": "云雀财经", "category": "公司公告", "url": "https://news.larkspire.example/demo"}'
}
# The desktop lives as long as the wait makes sense.
or_desktop_gone() { "$@" || ! kill -0 "$desktop" 2>/dev/null; }

trading_program() { xdotool search --all --onlyvisible --pid "$standin" --name '通达信.* 600519' 2>/dev/null | head -n 1; }
trading_program_visible() { [ -n "$(trading_program)" ]; }
# To the left, where nothing else comes up.
place_trading_program() {
    wait_until 10 trading_program_visible || fail "the stand-in shows no stock; see $state/trading-program.log"
    xdotool windowmove --sync "$(trading_program)" 60 300 || fail "the stand-in's window could not be moved"
}
trading_program_painted() { [ "$(import -silent -window "$(trading_program)" -format '%k' info: 2>/dev/null || echo 0)" -gt 20 ]; }
show_trading_program() {
    wait_until 10 trading_program_painted || fail "the stand-in's window stayed empty"
    import -silent -window "$(trading_program)" "$PWD/$state/trading-program.png" || fail "no picture of the stand-in could be taken"
    echo "$PWD/$state/trading-program.png"
}

prompt() { xdotool search --onlyvisible --name '^选择登录方式$' 2>/dev/null | head -n 1; }
prompt_visible() { [ -n "$(prompt)" ]; }
prompt_painted() { [ "$(import -silent -window "$(prompt)" -format '%k' info: 2>/dev/null || echo 0)" -gt 100 ]; }

show_first_prompt() {
    local picture
    say "Waiting for the question for a login"
    wait_until 60 or_desktop_gone prompt_visible || fail "no question for a login within 60 seconds; see $state/desktop.log"
    kill -0 "$desktop" 2>/dev/null || fail "the desktop ended: $(tail -n 1 "$state/desktop.log")"
    wait_until 10 prompt_painted || fail "the question for a login stayed empty"
    [ -z "$(main_window)" ] || fail "the window is there although nobody is logged in"
    picture=$PWD/$state/first-run.png
    import -silent -window root "$picture" || fail "no picture of the screen could be taken"
    echo "$picture"
}

show_first_news() {
    local picture
    place_trading_program
    say "Waiting for the login"
    wait_until 60 or_desktop_gone main_window_visible || fail "no window within 60 seconds; see $state/desktop.log"
    kill -0 "$desktop" 2>/dev/null || fail "the desktop ended: $(tail -n 1 "$state/desktop.log")"
    say "Waiting for the first news"
    wait_until 60 or_desktop_gone news_on_screen || fail "no news on screen within 60 seconds; see $state/desktop.log and $state/service.log"
    kill -0 "$desktop" 2>/dev/null || fail "the desktop ended: $(tail -n 1 "$state/desktop.log")"
    wait_until 5 popup_settled || fail "the popup stayed empty"
    picture=$PWD/$state/main-window.png
    import -silent -window "$(main_window)" "$picture" || fail "no picture of the window could be taken"
    say "Publishing an item that matches a keyword, and waiting for its popup"
    publish_keyword_item || fail "the service did not take the item; see $state/service.log"
    wait_until 60 or_desktop_gone popup_visible || fail "no popup within 60 seconds; see $state/desktop.log"
    wait_until 5 popup_painted || fail "the popup stayed empty"
    import -silent -window root "$PWD/$state/popup.png" || fail "no picture of the screen could be taken"
    echo "$picture"
    echo "$PWD/$state/popup.png"
    show_trading_program
}
