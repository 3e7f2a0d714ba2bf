do i = 1 to
end
